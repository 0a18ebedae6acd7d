#include "krtpal/text.h"

#include "krtpal/error.h"

#include <clocale>
#include <cstring>
#include <cwchar>
#include <cwctype>

namespace krtpal {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct Decoded {
    char32_t codePoint;
    std::size_t bytes;
    bool valid;
};

// Decodes the next code point. As on Windows, one U+FFFD replaces each malformed piece: a lead byte with the
// bytes that could continue it, including a second byte that makes the form invalid, or any other byte.
Decoded DecodeUtf8(const unsigned char* text, std::size_t length) {
    const unsigned lead = text[0];
    if (lead < 0x80) {
        return {lead, 1, true};
    }
    const std::size_t more = lead >= 0xC2 && lead <= 0xDF   ? 1
                             : lead >= 0xE0 && lead <= 0xEF ? 2
                             : lead >= 0xF0 && lead <= 0xF4 ? 3
                                                            : 0;
    if (more == 0) {
        return {kReplacement, 1, false};
    }
    char32_t codePoint = lead & (0x3FU >> more);
    for (std::size_t i = 1; i <= more; ++i) {
        if (i >= length) {
            return {kReplacement, i, false};
        }
        const unsigned byte = text[i];
        if (byte < 0x80 || byte > 0xBF) {
            return {kReplacement, i, false};
        }
        // The range of the second byte excludes overlong forms, surrogates and values above U+10FFFF.
        const unsigned lowest = i == 1 && lead == 0xE0 ? 0xA0 : i == 1 && lead == 0xF0 ? 0x90 : 0x80;
        const unsigned highest = i == 1 && lead == 0xED ? 0x9F : i == 1 && lead == 0xF4 ? 0x8F : 0xBF;
        if (byte < lowest || byte > highest) {
            return {kReplacement, 2, false};
        }
        codePoint = (codePoint << 6U) | (byte & 0x3FU);
    }
    return {codePoint, more + 1, true};
}

constexpr bool IsScalarValue(char32_t c) {
    return c < 0xD800 || (c > 0xDFFF && c <= 0x10FFFF);
}

std::size_t EncodeUtf8(char32_t codePoint, char (&bytes)[4]) {
    if (codePoint < 0x80) {
        bytes[0] = static_cast<char>(codePoint);
        return 1;
    }
    if (codePoint < 0x800) {
        bytes[0] = static_cast<char>(0xC0U | (codePoint >> 6U));
        bytes[1] = static_cast<char>(0x80U | (codePoint & 0x3FU));
        return 2;
    }
    if (codePoint < 0x10000) {
        bytes[0] = static_cast<char>(0xE0U | (codePoint >> 12U));
        bytes[1] = static_cast<char>(0x80U | ((codePoint >> 6U) & 0x3FU));
        bytes[2] = static_cast<char>(0x80U | (codePoint & 0x3FU));
        return 3;
    }
    bytes[0] = static_cast<char>(0xF0U | (codePoint >> 18U));
    bytes[1] = static_cast<char>(0x80U | ((codePoint >> 12U) & 0x3FU));
    bytes[2] = static_cast<char>(0x80U | ((codePoint >> 6U) & 0x3FU));
    bytes[3] = static_cast<char>(0x80U | (codePoint & 0x3FU));
    return 4;
}

int Fail(DWORD error) {
    SetLastError(error);
    return 0;
}

bool IsKnown(UINT codePage) {
    return codePage == CP_ACP || codePage == CP_THREAD_ACP || codePage == CP_UTF8;
}

} // namespace

int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR text, int length, LPWSTR wide, int room) {
    if (text == nullptr || length == 0 || length < -1 || room < 0 || (room > 0 && wide == nullptr) ||
        !IsKnown(codePage)) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const DWORD allowed = codePage == CP_UTF8 ? MB_ERR_INVALID_CHARS : MB_ERR_INVALID_CHARS | MB_PRECOMPOSED;
    if ((flags & ~allowed) != 0) {
        return Fail(ERROR_INVALID_FLAGS);
    }
    const auto* bytes = reinterpret_cast<const unsigned char*>(text);
    std::size_t left = length == -1 ? std::strlen(text) + 1 : static_cast<std::size_t>(length);
    int count = 0;
    while (left != 0) {
        const Decoded next = DecodeUtf8(bytes, left);
        if (!next.valid && (flags & MB_ERR_INVALID_CHARS) != 0) {
            return Fail(ERROR_NO_UNICODE_TRANSLATION);
        }
        if (room != 0) {
            if (count == room) {
                return Fail(ERROR_INSUFFICIENT_BUFFER);
            }
            wide[count] = static_cast<wchar_t>(next.codePoint);
        }
        ++count;
        bytes += next.bytes;
        left -= next.bytes;
    }
    return count;
}

int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR text, int length, LPSTR narrow, int room,
                        LPCSTR defaultChar, BOOL* usedDefaultChar) {
    if (text == nullptr || length == 0 || length < -1 || room < 0 || (room > 0 && narrow == nullptr) ||
        !IsKnown(codePage)) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    // UTF-8 has every character.
    if (defaultChar != nullptr || usedDefaultChar != nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const DWORD allowed =
        codePage == CP_UTF8 ? WC_ERR_INVALID_CHARS : WC_ERR_INVALID_CHARS | WC_NO_BEST_FIT_CHARS;
    if ((flags & ~allowed) != 0) {
        return Fail(ERROR_INVALID_FLAGS);
    }
    const std::size_t size = length == -1 ? std::wcslen(text) + 1 : static_cast<std::size_t>(length);
    std::size_t count = 0;
    for (std::size_t i = 0; i < size; ++i) {
        auto codePoint = static_cast<char32_t>(text[i]);
        if (!IsScalarValue(codePoint)) {
            if ((flags & WC_ERR_INVALID_CHARS) != 0) {
                return Fail(ERROR_NO_UNICODE_TRANSLATION);
            }
            codePoint = kReplacement;
        }
        char bytes[4];
        const std::size_t used = EncodeUtf8(codePoint, bytes);
        if (room != 0) {
            if (used > static_cast<std::size_t>(room) - count) {
                return Fail(ERROR_INSUFFICIENT_BUFFER);
            }
            std::memcpy(narrow + count, bytes, used);
        }
        count += used;
    }
    if (count > INT32_MAX) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    return static_cast<int>(count);
}

DWORD CharUpperBuffW(LPWSTR text, DWORD count) {
    // Unicode's mapping, independent of the program's locale.
    static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    for (DWORD i = 0; i < count; ++i) {
        const auto c = static_cast<wint_t>(static_cast<char32_t>(text[i]));
        text[i] = static_cast<wchar_t>(unicode == nullptr ? std::towupper(c) : towupper_l(c, unicode));
    }
    return count;
}

} // namespace krtpal
