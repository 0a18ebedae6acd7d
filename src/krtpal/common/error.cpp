#include "krtpal/common/error.h"

#include "krtpal/memory.h"

namespace krtpal {

std::wstring SystemText(DWORD error) {
    const DWORD before = GetLastError();
    wchar_t* allocated = nullptr;
    constexpr DWORD kFlags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                             FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
    const DWORD length =
        FormatMessageW(kFlags, nullptr, error, 0, reinterpret_cast<LPWSTR>(&allocated), 0, nullptr);
    std::wstring text;
    if (length == 0) {
        text = L"Unknown error";
    } else {
        text.assign(allocated, length);
        LocalFree(allocated);
        text.erase(text.find_last_not_of(L" \t\r\n") + 1);
    }
    SetLastError(before);
    return text;
}

} // namespace krtpal
