// Values as the driver keeps them, and their way from and to the bytes of an application's buffers.

#ifndef TESTS_SUPPORT_ODBC_VALUE_H
#define TESTS_SUPPORT_ODBC_VALUE_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace testodbc {

/// What a call fails with; becomes its diagnostic record.
struct Failure {
    std::string state;
    std::string text;
    int native = 0;
};

[[noreturn]] void Fail(std::string state, std::string text);

using Null = std::monostate;
using Bytes = std::vector<unsigned char>;
using Guid = std::array<unsigned char, 16>; ///< as in memory
using Value = std::variant<Null, std::int64_t, double, std::u16string, Bytes, Guid>;
using Row = std::vector<Value>;

/// Lossless for any code units: a lone surrogate becomes the three bytes of its number.
std::string Utf8FromUtf16(std::u16string_view text);
std::u16string Utf16FromUtf8(std::string_view text);

/// Any value but null as text
std::string TextOf(const Value& value);

/// Names and texts are compared without regard to the case of ASCII letters, as both back-ends do.
std::string Lower(std::string_view text);
bool IsSameName(std::string_view a, std::string_view b);
bool IsLike(std::string_view text, std::string_view pattern);

bool AreEqual(const Value& a, const Value& b);
bool IsLess(const Value& a, const Value& b);

/// The value as a column of that SQL type keeps it. Fails with 22018 where it has no meaning there.
Value Coerce(const Value& value, int sqlType);

/// Bytes of a value of a C type; nothing for types of variable length, and for types that the driver lacks.
std::optional<std::size_t> SizeOfC(int cType);
bool IsVariableC(int cType);
/// The value in a buffer of that C type. Fails with 07006 for a C type that the driver lacks.
Value FromC(int cType, const Bytes& bytes);
/// The bytes of a value, not null, for a buffer of that C type, without a closing zero.
Bytes ToC(int cType, const Value& value);

} // namespace testodbc

#endif
