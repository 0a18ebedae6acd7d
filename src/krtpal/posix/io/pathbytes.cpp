#include "krtpal/posix/io/pathbytes.h"

#include "krtpal/common/text.h"

#include <string_view>

namespace krtpal::posix {

std::string PathBytes(LPCWSTR path) {
    const std::wstring_view wide(path);
    std::string narrow = Utf8FromWide(wide);
    return WideFromUtf8(narrow) == wide ? narrow : std::string();
}

} // namespace krtpal::posix
