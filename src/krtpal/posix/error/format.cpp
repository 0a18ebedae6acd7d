// FormatMessageW: expands the template into a string and copies it to the caller's buffer or to a new one.

#include "krtpal/common/text.h"
#include "krtpal/error.h"
#include "krtpal/memory.h"
#include "krtpal/posix/error/systemtext.h"

#include <algorithm>
#include <cwchar>
#include <string>
#include <utility>

namespace krtpal {

namespace {

// A printf format between exclamation marks.
struct InsertFormat {
    bool leftAligned = false;
    bool plus = false;
    bool blank = false;
    bool alternate = false;
    bool zeros = false;
    std::size_t width = 0;
    std::size_t precision = std::wstring::npos;
    bool is64Bit = false;
    bool isShort = false;
    bool isNarrow = false;
    wchar_t conversion = L's';
};

// Wider fields are rejected as an error of the template.
constexpr std::size_t kWidestField = 65'535;

// Expands one template. After the first failure the result is undefined.
class Expansion {
public:
    Expansion(DWORD flags, const wchar_t* source, const DWORD_PTR* arguments, bool isArray)
        : m_ignoreInserts((flags & FORMAT_MESSAGE_IGNORE_INSERTS) != 0),
          m_joinLines((flags & FORMAT_MESSAGE_MAX_WIDTH_MASK) == FORMAT_MESSAGE_MAX_WIDTH_MASK), m_at(source),
          m_arguments(arguments), m_isArray(isArray) {}

    std::wstring Run() {
        while (*m_at != L'\0' && !m_ended && m_error == 0) {
            const wchar_t c = *m_at++;
            if (c == L'%') {
                Escape();
            } else if (c == L'\r' || c == L'\n') {
                if (c == L'\r' && *m_at == L'\n') {
                    ++m_at;
                }
                m_text += m_joinLines ? L" " : L"\r\n";
            } else {
                m_text += c;
            }
        }
        return std::move(m_text);
    }

    DWORD Error() const { return m_error; }

private:
    void Fail(DWORD error) { m_error = m_error == 0 ? error : m_error; }

    void Escape() {
        const wchar_t c = *m_at;
        if (c == L'\0') {
            Fail(ERROR_INVALID_PARAMETER);
            return;
        }
        if (c >= L'1' && c <= L'9' && !m_ignoreInserts) {
            Insert();
            return;
        }
        ++m_at;
        switch (c) {
        case L'0':
            m_ended = true;
            break;
        case L'n':
            m_text += L"\r\n";
            break;
        case L'r':
            m_text += L'\r';
            break;
        case L't':
            m_text += L'\t';
            break;
        default:
            // With IGNORE_INSERTS the escapes of literal characters are preserved, too.
            if (m_ignoreInserts) {
                m_text += L'%';
            }
            m_text += c;
        }
    }

    static bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

    void Insert() {
        std::size_t number = static_cast<std::size_t>(*m_at++ - L'0');
        if (IsDigit(*m_at)) {
            number = number * 10 + static_cast<std::size_t>(*m_at++ - L'0');
        }
        InsertFormat format;
        bool hasText = true;
        if (*m_at == L'!') {
            ++m_at;
            hasText = ParseFormat(&format, &number);
        }
        if (m_error == 0 && hasText) {
            Append(format, Argument(number));
        }
    }

    DWORD_PTR Argument(std::size_t number) {
        if (m_arguments == nullptr || number > 99) {
            Fail(ERROR_INVALID_PARAMETER);
            return 0;
        }
        if (!m_isArray) {
            Fail(ERROR_NOT_SUPPORTED);
            return 0;
        }
        return m_arguments[number - 1];
    }

    // Parses a number, or takes the next argument for an asterisk.
    std::size_t ParseCount(std::size_t* number) {
        if (*m_at == L'*') {
            ++m_at;
            const auto value = static_cast<LONG>(Argument((*number)++));
            if (value < 0) {
                Fail(ERROR_NOT_SUPPORTED);
                return 0;
            }
            return CheckedCount(static_cast<std::size_t>(value));
        }
        std::size_t value = 0;
        while (IsDigit(*m_at) && value <= kWidestField) {
            value = value * 10 + static_cast<std::size_t>(*m_at++ - L'0');
        }
        return CheckedCount(value);
    }

    std::size_t CheckedCount(std::size_t value) {
        if (value > kWidestField) {
            Fail(ERROR_INVALID_PARAMETER);
            return 0;
        }
        return value;
    }

    void ParseFlags(InsertFormat* format) {
        for (;; ++m_at) {
            switch (*m_at) {
            case L'-':
                format->leftAligned = true;
                break;
            case L'+':
                format->plus = true;
                break;
            case L' ':
                format->blank = true;
                break;
            case L'#':
                format->alternate = true;
                break;
            case L'0':
                format->zeros = true;
                break;
            default:
                return;
            }
        }
    }

    void ParseSize(InsertFormat* format) {
        if (std::wcsncmp(m_at, L"I64", 3) == 0) {
            format->is64Bit = true;
            m_at += 3;
        } else if (std::wcsncmp(m_at, L"ll", 2) == 0) {
            format->is64Bit = true;
            m_at += 2;
        } else if (*m_at == L'h') {
            format->isShort = true;
            ++m_at;
        } else if (*m_at == L'l' || *m_at == L'w') {
            ++m_at;
        }
    }

    // Returns false for a format without a conversion, which inserts nothing. Advances `number` by the
    // arguments of asterisks.
    bool ParseFormat(InsertFormat* format, std::size_t* number) {
        if (std::wcschr(m_at, L'!') == nullptr) {
            Fail(ERROR_INVALID_PARAMETER);
            return false;
        }
        ParseFlags(format);
        format->width = ParseCount(number);
        if (*m_at == L'.') {
            ++m_at;
            format->precision = ParseCount(number);
        }
        ParseSize(format);
        if (*m_at == L'!') {
            ++m_at;
            return false;
        }
        format->conversion = *m_at++;
        if (*m_at != L'!') {
            Fail(ERROR_INVALID_PARAMETER);
            return false;
        }
        ++m_at;
        format->isNarrow = format->isShort || format->conversion == L'S';
        return m_error == 0;
    }

    void Append(const InsertFormat& format, DWORD_PTR value) {
        switch (m_error == 0 ? format.conversion : L'\0') {
        case L's':
        case L'S':
            AppendText(format, value);
            break;
        case L'c':
        case L'C':
            Pad(format, std::wstring(1, static_cast<wchar_t>(static_cast<DWORD>(value))), false);
            break;
        case L'd':
        case L'i':
        case L'u':
        case L'x':
        case L'X':
        case L'o':
            AppendNumber(format, value);
            break;
        default:
            Fail(ERROR_NOT_SUPPORTED);
        }
    }

    void AppendText(const InsertFormat& format, DWORD_PTR value) {
        std::wstring text;
        if (value == 0) {
            text = L"(null)";
        } else if (format.isNarrow) {
            text = WidenText(reinterpret_cast<const char*>(value));
        } else {
            // With a precision the text need not end with a NUL.
            const auto* const wide = reinterpret_cast<const wchar_t*>(value);
            text.assign(wide, format.precision == std::wstring::npos ? std::wcslen(wide)
                                                                     : wcsnlen(wide, format.precision));
        }
        Pad(format, text.substr(0, format.precision), false);
    }

    void AppendNumber(const InsertFormat& format, DWORD_PTR value) {
        ULONGLONG magnitude = value;
        std::wstring prefix;
        if (format.conversion == L'd' || format.conversion == L'i') {
            const LONGLONG number = format.is64Bit   ? static_cast<LONGLONG>(value)
                                    : format.isShort ? static_cast<SHORT>(value)
                                                     : static_cast<LONG>(value);
            magnitude = number < 0 ? 0 - static_cast<ULONGLONG>(number) : static_cast<ULONGLONG>(number);
            prefix = number < 0 ? L"-" : format.plus ? L"+" : format.blank ? L" " : L"";
        } else if (format.isShort) {
            magnitude = static_cast<WORD>(value);
        } else if (!format.is64Bit) {
            magnitude = static_cast<DWORD>(value);
        }
        const unsigned base = format.conversion == L'o' ? 8 : (format.conversion | 0x20) == L'x' ? 16 : 10;
        if (format.alternate && magnitude != 0 && base != 10) {
            prefix = base == 8 ? L"0" : format.conversion == L'x' ? L"0x" : L"0X";
        }
        const wchar_t* const digitSet = format.conversion == L'X' ? L"0123456789ABCDEF" : L"0123456789abcdef";
        std::wstring digits;
        for (; magnitude != 0; magnitude /= base) {
            digits += digitSet[magnitude % base];
        }
        const bool hasPrecision = format.precision != std::wstring::npos;
        std::size_t least = hasPrecision ? format.precision : 1;
        if (format.zeros && !format.leftAligned && !hasPrecision && format.width > prefix.size()) {
            least = std::max(least, format.width - prefix.size());
        }
        if (digits.size() < least) {
            digits.append(least - digits.size(), L'0');
        }
        std::reverse(digits.begin(), digits.end());
        Pad(format, prefix + digits, true);
    }

    void Pad(const InsertFormat& format, const std::wstring& text, bool isNumber) {
        const std::size_t missing = format.width > text.size() ? format.width - text.size() : 0;
        const wchar_t filler = format.zeros && !isNumber ? L'0' : L' ';
        m_text.append(format.leftAligned ? 0 : missing, filler);
        m_text += text;
        m_text.append(format.leftAligned ? missing : 0, L' ');
    }

    bool m_ignoreInserts;
    bool m_joinLines;
    const wchar_t* m_at;
    const DWORD_PTR* m_arguments;
    bool m_isArray;
    std::wstring m_text;
    bool m_ended = false;
    DWORD m_error = 0;
};

DWORD Fail(DWORD error) {
    SetLastError(error);
    return 0;
}

constexpr DWORD kKnownFlags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS |
                              FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_FROM_HMODULE |
                              FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_ARGUMENT_ARRAY |
                              FORMAT_MESSAGE_MAX_WIDTH_MASK;

DWORD CheckFlags(DWORD flags) {
    if ((flags & ~kKnownFlags) != 0 || (flags & (FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_FROM_SYSTEM |
                                                 FORMAT_MESSAGE_FROM_HMODULE)) == 0) {
        return ERROR_INVALID_PARAMETER;
    }
    const DWORD width = flags & FORMAT_MESSAGE_MAX_WIDTH_MASK;
    if ((flags & FORMAT_MESSAGE_FROM_HMODULE) != 0 ||
        (width != 0 && width != FORMAT_MESSAGE_MAX_WIDTH_MASK)) {
        return ERROR_NOT_SUPPORTED;
    }
    return 0;
}

bool HasEnglishTexts(DWORD languageId) {
    constexpr DWORD kEnglish = 9;
    const DWORD primary = languageId & 0x3FF;
    return primary == LANG_NEUTRAL || primary == kEnglish;
}

DWORD Allocate(const std::wstring& text, DWORD leastSize, wchar_t** result) {
    const std::size_t size = std::max<std::size_t>(text.size() + 1, leastSize);
    auto* const memory = static_cast<wchar_t*>(LocalAlloc(LMEM_ZEROINIT, size * sizeof(wchar_t)));
    if (memory == nullptr) {
        return 0;
    }
    std::copy(text.begin(), text.end(), memory);
    *result = memory;
    return static_cast<DWORD>(text.size());
}

DWORD CopyTo(const std::wstring& text, wchar_t* buffer, DWORD size) {
    const std::size_t length = std::min<std::size_t>(text.size(), size == 0 ? 0 : size - 1);
    std::copy_n(text.begin(), length, buffer);
    if (size != 0) {
        buffer[length] = L'\0';
    }
    return size <= text.size() ? Fail(ERROR_INSUFFICIENT_BUFFER) : static_cast<DWORD>(text.size());
}

} // namespace

DWORD FormatMessageW(DWORD flags, LPCVOID source, DWORD messageId, DWORD languageId, LPWSTR buffer,
                     DWORD size, std::va_list* arguments) {
    if (buffer == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const bool allocate = (flags & FORMAT_MESSAGE_ALLOCATE_BUFFER) != 0;
    auto** const allocated = reinterpret_cast<wchar_t**>(buffer);
    if (allocate) {
        *allocated = nullptr;
    }
    if (const DWORD error = CheckFlags(flags); error != 0) {
        return Fail(error);
    }
    std::wstring text;
    if ((flags & FORMAT_MESSAGE_FROM_STRING) != 0) {
        if (source == nullptr) {
            return Fail(ERROR_INVALID_PARAMETER);
        }
        text = static_cast<const wchar_t*>(source);
    } else {
        const wchar_t* const systemText = posix::FindSystemText(messageId);
        if (systemText == nullptr) {
            return Fail(ERROR_MR_MID_NOT_FOUND);
        }
        if (!HasEnglishTexts(languageId)) {
            return Fail(ERROR_RESOURCE_LANG_NOT_FOUND);
        }
        text = std::wstring(systemText) + L"\r\n";
    }
    Expansion expansion(flags, text.c_str(), reinterpret_cast<const DWORD_PTR*>(arguments),
                        (flags & FORMAT_MESSAGE_ARGUMENT_ARRAY) != 0);
    const std::wstring expanded = expansion.Run();
    if (expansion.Error() != 0) {
        return Fail(expansion.Error());
    }
    if (expanded.empty()) {
        return Fail(ERROR_NO_WORK_DONE);
    }
    return allocate ? Allocate(expanded, size, allocated) : CopyTo(expanded, buffer, size);
}

} // namespace krtpal
