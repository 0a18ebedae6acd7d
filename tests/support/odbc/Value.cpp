#include "support/odbc/Value.h"

#include "support/odbc/Odbc.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace testodbc {

namespace {

constexpr std::string_view kDigits = "0123456789ABCDEF";

char LowerOf(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

void AppendUtf8(std::string& out, char32_t c) {
    const auto put = [&out](char32_t bits) { out += static_cast<char>(static_cast<unsigned char>(bits)); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | c >> 6);
        put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        put(0xE0 | c >> 12);
        put(0x80 | (c >> 6 & 0x3F));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xF0 | c >> 18);
        put(0x80 | (c >> 12 & 0x3F));
        put(0x80 | (c >> 6 & 0x3F));
        put(0x80 | (c & 0x3F));
    }
}

template <typename T>
T FromImage(const Bytes& bytes) {
    T value{};
    if (bytes.size() < sizeof(T)) {
        Fail("22003", "too few bytes for a number");
    }
    std::memcpy(&value, bytes.data(), sizeof(T));
    return value;
}

template <typename T>
Bytes Image(T value) {
    Bytes bytes(sizeof(T));
    std::memcpy(bytes.data(), &value, sizeof(T));
    return bytes;
}

template <typename Text>
Bytes ImageOfText(const Text& text) {
    const auto* const first = reinterpret_cast<const unsigned char*>(text.data());
    return {first, first + text.size() * sizeof(text[0])};
}

std::u16string WideFromImage(const Bytes& bytes) {
    if (bytes.size() % 2 != 0) {
        Fail("HY090", "half a character of wide text");
    }
    std::u16string text(bytes.size() / 2, u'\0');
    if (!text.empty()) {
        std::memcpy(text.data(), bytes.data(), bytes.size());
    }
    return text;
}

std::string HexOf(const unsigned char* bytes, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 15];
    }
    return text;
}

/// {00112233-4455-6677-8899-AABBCCDDEEFF}; the first three groups lie in memory with their low byte first.
std::string TextOfGuid(const Guid& guid) {
    static constexpr std::array<int, 16> order = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    std::string text = "{";
    for (std::size_t i = 0; i < order.size(); ++i) {
        text += i == 4 || i == 6 || i == 8 || i == 10 ? "-" : "";
        text += HexOf(&guid[static_cast<std::size_t>(order[i])], 1);
    }
    return text + "}";
}

double NumberOf(const Value& value) {
    if (const auto* const whole = std::get_if<std::int64_t>(&value)) {
        return static_cast<double>(*whole);
    }
    if (const auto* const real = std::get_if<double>(&value)) {
        return *real;
    }
    if (const auto* const text = std::get_if<std::u16string>(&value)) {
        const std::string narrow = Utf8FromUtf16(*text);
        double number = 0;
        const auto [end, error] = std::from_chars(narrow.data(), narrow.data() + narrow.size(), number);
        if (error == std::errc() && end == narrow.data() + narrow.size()) {
            return number;
        }
    }
    Fail("22018", "no number: '" + TextOf(value) + "'");
}

std::int64_t WholeOf(const Value& value, std::int64_t least, std::int64_t most) {
    const double number = std::trunc(NumberOf(value));
    if (!(number >= static_cast<double>(least) && number <= static_cast<double>(most))) {
        Fail("22003", "number out of range: " + TextOf(value));
    }
    return static_cast<std::int64_t>(number);
}

template <typename T>
Bytes ImageOfWhole(const Value& value) {
    return Image(
        static_cast<T>(WholeOf(value, std::numeric_limits<T>::min(), std::numeric_limits<T>::max())));
}

Bytes ImageOfRaw(const Value& value) {
    if (const auto* const bytes = std::get_if<Bytes>(&value)) {
        return *bytes;
    }
    if (const auto* const guid = std::get_if<Guid>(&value)) {
        return {guid->begin(), guid->end()};
    }
    if (const auto* const text = std::get_if<std::u16string>(&value)) {
        return ImageOfText(*text);
    }
    Fail("07006", "a number can't be read as bytes");
}

template <typename T>
T Expect(const Value& value, const char* what) {
    if (const T* const held = std::get_if<T>(&value)) {
        return *held;
    }
    Fail("22018", std::string("no ") + what + ": '" + TextOf(value) + "'");
}

} // namespace

void Fail(std::string state, std::string text) {
    throw Failure{std::move(state), std::move(text)};
}

std::string TextOf(const Value& value) {
    if (const auto* const whole = std::get_if<std::int64_t>(&value)) {
        return std::to_string(*whole);
    }
    if (const auto* const real = std::get_if<double>(&value)) {
        std::array<char, 32> text{};
        return {text.data(), std::to_chars(text.data(), text.data() + text.size(), *real).ptr};
    }
    if (const auto* const bytes = std::get_if<Bytes>(&value)) {
        return HexOf(bytes->data(), bytes->size());
    }
    if (const auto* const guid = std::get_if<Guid>(&value)) {
        return TextOfGuid(*guid);
    }
    return Utf8FromUtf16(std::get<std::u16string>(value));
}

std::string Utf8FromUtf16(std::u16string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t unit = text[i];
        const bool isPair = unit >= 0xD800 && unit < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
                            text[i + 1] < 0xE000;
        AppendUtf8(out, isPair ? 0x10000 + ((unit - 0xD800) << 10) + (text[++i] - 0xDC00U) : unit);
    }
    return out;
}

std::u16string Utf16FromUtf8(std::string_view text) {
    std::u16string out;
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const std::size_t count = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        if (i + count > text.size()) {
            Fail("HY000", "text cut inside a character");
        }
        char32_t c = count == 1 ? lead : lead & (0xFFU >> (count + 1));
        for (std::size_t k = 1; k < count; ++k) {
            c = c << 6 | (static_cast<unsigned char>(text[i + k]) & 0x3FU);
        }
        if (c >= 0x10000) {
            out += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
            c = 0xDC00 + ((c - 0x10000) & 0x3FF);
        }
        out += static_cast<char16_t>(c);
        i += count;
    }
    return out;
}

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), LowerOf);
    return lower;
}

bool IsSameName(std::string_view a, std::string_view b) {
    return Lower(a) == Lower(b);
}

bool IsLike(std::string_view text, std::string_view pattern) {
    if (pattern.empty()) {
        return text.empty();
    }
    if (pattern[0] == '%') {
        return IsLike(text, pattern.substr(1)) || (!text.empty() && IsLike(text.substr(1), pattern));
    }
    return !text.empty() && (pattern[0] == '_' || LowerOf(pattern[0]) == LowerOf(text[0])) &&
           IsLike(text.substr(1), pattern.substr(1));
}

bool AreEqual(const Value& a, const Value& b) {
    if (a.index() == b.index() && !std::holds_alternative<std::u16string>(a)) {
        return a == b;
    }
    if (std::holds_alternative<Null>(a) || std::holds_alternative<Null>(b)) {
        return false;
    }
    return IsSameName(TextOf(a), TextOf(b));
}

bool IsLess(const Value& a, const Value& b) {
    if (std::holds_alternative<Null>(a) || std::holds_alternative<Null>(b)) {
        return a.index() < b.index();
    }
    if (std::holds_alternative<std::u16string>(a)) {
        return Lower(TextOf(a)) < Lower(TextOf(b));
    }
    return a < b;
}

Value Coerce(const Value& value, int sqlType) {
    if (std::holds_alternative<Null>(value)) {
        return value;
    }
    switch (sqlType) {
    case SQL_BIT:
        return WholeOf(value, 0, 1);
    case SQL_INTEGER:
    case SQL_DECIMAL:
        return WholeOf(value, std::numeric_limits<std::int32_t>::min(),
                       std::numeric_limits<std::int32_t>::max());
    case SQL_FLOAT:
    case SQL_DOUBLE:
        return NumberOf(value);
    case SQL_GUID:
        return Expect<Guid>(value, "GUID");
    case SQL_LONGVARBINARY:
        return Expect<Bytes>(value, "binary value");
    case SQL_CHAR:
        return Utf16FromUtf8(TextOf(value));
    default:
        return Expect<std::u16string>(value, "text");
    }
}

bool IsVariableC(int cType) {
    return cType == SQL_C_CHAR || cType == SQL_C_WCHAR || cType == SQL_C_BINARY;
}

std::optional<std::size_t> SizeOfC(int cType) {
    switch (cType) {
    case SQL_C_BIT:
        return 1;
    case SQL_C_SHORT:
    case SQL_C_SSHORT:
        return 2;
    case SQL_C_LONG:
    case SQL_C_SLONG:
        return 4;
    case SQL_C_DOUBLE:
        return 8;
    case SQL_C_GUID:
        return sizeof(Guid);
    default:
        return std::nullopt;
    }
}

Value FromC(int cType, const Bytes& bytes) {
    switch (cType) {
    case SQL_C_BIT:
        return std::int64_t{FromImage<std::uint8_t>(bytes)};
    case SQL_C_SHORT:
    case SQL_C_SSHORT:
        return std::int64_t{FromImage<std::int16_t>(bytes)};
    case SQL_C_LONG:
    case SQL_C_SLONG:
        return std::int64_t{FromImage<std::int32_t>(bytes)};
    case SQL_C_DOUBLE:
        return FromImage<double>(bytes);
    case SQL_C_GUID:
        return FromImage<Guid>(bytes);
    case SQL_C_CHAR:
        return Utf16FromUtf8({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    case SQL_C_WCHAR:
        return WideFromImage(bytes);
    case SQL_C_BINARY:
        return bytes;
    default:
        Fail("07006", "C type " + std::to_string(cType) + " is not supported");
    }
}

Bytes ToC(int cType, const Value& value) {
    switch (cType) {
    case SQL_C_BIT:
        return Image(static_cast<std::uint8_t>(WholeOf(value, 0, 1)));
    case SQL_C_SHORT:
    case SQL_C_SSHORT:
        return ImageOfWhole<std::int16_t>(value);
    case SQL_C_LONG:
    case SQL_C_SLONG:
        return ImageOfWhole<std::int32_t>(value);
    case SQL_C_DOUBLE:
        return Image(NumberOf(value));
    case SQL_C_GUID:
        return Image(Expect<Guid>(value, "GUID"));
    case SQL_C_CHAR:
        return ImageOfText(TextOf(value));
    case SQL_C_WCHAR:
        return ImageOfText(Utf16FromUtf8(TextOf(value)));
    case SQL_C_BINARY:
        return ImageOfRaw(value);
    default:
        Fail("07006", "C type " + std::to_string(cType) + " is not supported");
    }
}

} // namespace testodbc
