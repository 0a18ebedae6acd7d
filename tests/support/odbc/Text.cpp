// Apart from the other sources: the driver manager's headers define types of the same names.

#include "krtpal/text.h"

#include <string>
#include <string_view>

namespace testodbc {

std::string Utf8FromUtf16(std::u16string_view text) {
    return krtpal::Utf8FromWide(krtpal::WideFromUtf16(text));
}

std::u16string Utf16FromUtf8(std::string_view text) {
    return krtpal::Utf16FromWide(krtpal::WideFromUtf8(text));
}

} // namespace testodbc
