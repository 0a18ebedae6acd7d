#include "krtpal/variant.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace krtpal {

namespace {

// The count directly precedes the characters, which have the alignment of malloc.
constexpr std::size_t kHeader = 16;
static_assert(kHeader % alignof(std::max_align_t) == 0);

void SetByteCount(BSTR string, std::uint32_t bytes) {
    std::memcpy(reinterpret_cast<char*>(string) - sizeof(bytes), &bytes, sizeof(bytes));
}

// Allocates a string of undefined bytes with its NUL. Returns null from 2 GiB on.
BSTR Allocate(std::size_t bytes) {
    if (bytes > INT32_MAX - kHeader - 2 * sizeof(wchar_t)) {
        return nullptr;
    }
    // Zeros complete a partial last character; a whole NUL follows.
    const std::size_t rounded = (bytes + sizeof(wchar_t) - 1) / sizeof(wchar_t) * sizeof(wchar_t);
    auto* const memory = static_cast<char*>(std::malloc(kHeader + rounded + sizeof(wchar_t)));
    if (memory == nullptr) {
        return nullptr;
    }
    std::memset(memory + kHeader + bytes, 0, rounded + sizeof(wchar_t) - bytes);
    auto* const string = reinterpret_cast<BSTR>(memory + kHeader);
    SetByteCount(string, static_cast<std::uint32_t>(bytes));
    return string;
}

} // namespace

BSTR SysAllocString(const OLECHAR* text) {
    const std::size_t length = text == nullptr ? 0 : std::wcslen(text);
    return text == nullptr || length > UINT32_MAX ? nullptr
                                                  : SysAllocStringLen(text, static_cast<UINT>(length));
}

BSTR SysAllocStringLen(const OLECHAR* text, UINT length) {
    const std::size_t bytes = std::size_t{length} * sizeof(wchar_t);
    const BSTR string = Allocate(bytes);
    if (string != nullptr && text != nullptr) {
        std::memcpy(string, text, bytes);
    }
    return string;
}

BSTR SysAllocStringByteLen(LPCSTR bytes, UINT length) {
    const BSTR string = Allocate(length);
    if (string != nullptr && bytes != nullptr) {
        std::memcpy(string, bytes, length);
    }
    return string;
}

INT SysReAllocString(BSTR* string, const OLECHAR* text) {
    if (string == nullptr) {
        return FALSE;
    }
    const BSTR replacement = SysAllocString(text);
    if (replacement == nullptr && text != nullptr) {
        return FALSE;
    }
    SysFreeString(*string);
    *string = replacement;
    return TRUE;
}

INT SysReAllocStringLen(BSTR* string, const OLECHAR* text, UINT length) {
    if (string == nullptr) {
        return FALSE;
    }
    const BSTR replacement = SysAllocStringLen(text, length);
    if (replacement == nullptr) {
        return FALSE;
    }
    if (text == nullptr && *string != nullptr) {
        std::wmemcpy(replacement, *string, std::min(length, SysStringLen(*string)));
    }
    SysFreeString(*string);
    *string = replacement;
    return TRUE;
}

void SysFreeString(BSTR string) {
    if (string != nullptr) {
        std::free(reinterpret_cast<char*>(string) - kHeader);
    }
}

UINT SysStringLen(BSTR string) {
    return SysStringByteLen(string) / static_cast<UINT>(sizeof(wchar_t));
}

UINT SysStringByteLen(BSTR string) {
    std::uint32_t bytes = 0;
    if (string != nullptr) {
        std::memcpy(&bytes, reinterpret_cast<const char*>(string) - sizeof(bytes), sizeof(bytes));
    }
    return bytes;
}

} // namespace krtpal
