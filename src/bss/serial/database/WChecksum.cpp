#include "bss/serial/database/WChecksum.h"

#include "krtpal/common/text.h"

#include <zlib.h>

namespace bss {

WChecksum::~WChecksum() = default;

unsigned long WChecksum::GetCheckSum(const wchar_t* text, unsigned long count, unsigned long seed) {
    if (text == nullptr) {
        return 0;
    }
    const auto units = krtpal::Utf16FromWide(std::wstring_view(text, count));
    return crc32_z(seed, reinterpret_cast<const unsigned char*>(units.data()),
                   units.size() * sizeof(krtpal::Utf16Unit));
}

unsigned long WChecksum::GetCheckSum(unsigned char* const data, unsigned long length, unsigned long seed) {
    return data == nullptr ? 0 : crc32_z(seed, data, length);
}

} // namespace bss
