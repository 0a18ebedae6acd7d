#include "platform/posix/pathbytes.h"

#include "platform/text.h"

#include <string_view>

namespace platform::posix {

std::string PathBytes(LPCWSTR path) {
    const std::wstring_view wide(path);
    std::string narrow = Utf8FromWide(wide);
    return WideFromUtf8(narrow) == wide ? narrow : std::string();
}

} // namespace platform::posix
