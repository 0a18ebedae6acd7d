// Apart from the other sources: the driver manager's headers define types of the same names.

#include "krtpal/common/text.h"
#include "bss/system/WGuid.h"

#include <cstring>
#include <string>

namespace testodbc {

std::string Utf8FromImage(const std::string& image) {
    krtpal::Utf16String units(image.size() / 2, 0);
    std::memcpy(units.data(), image.data(), units.size() * 2);
    return krtpal::Utf8FromWide(krtpal::WideFromUtf16(units));
}

std::string Utf16Image(const std::string& text) {
    const auto units = krtpal::Utf16FromWide(krtpal::WideFromUtf8(text));
    return {reinterpret_cast<const char*>(units.data()), units.size() * 2};
}

std::string TextOfGuid(const std::string& image) {
    krtpal::GUID guid{};
    std::memcpy(&guid, image.data(), sizeof(guid));
    return krtpal::Utf8FromWide(bss::WGuid::GetAsText(guid));
}

} // namespace testodbc
