// Texts and numbers for people and for JSON. All narrow text is UTF-8.

#ifndef TOOLS_KRTSTORE_TEXT_H
#define TOOLS_KRTSTORE_TEXT_H

#include "common/Failure.h"
#include "krtpal/guid.h"
#include "krtpal/unqualified.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace krtstore {

std::wstring Wide(std::string_view utf8);
std::string Utf8(std::wstring_view text);

using tools::Quote;
// The same of wide text.
std::string Quote(const std::wstring& text);

// The text as JSON has it, quotes included: control characters, noncharacters and halves of surrogate pairs
// as \uXXXX.
std::string JsonText(const std::wstring& text);
// The shortest digits that give the same number again; "NaN", "Infinity" and "-Infinity", with quotes, for
// what JSON has no number for.
std::string JsonNumber(double value);

// The UTF-16 code units, four hexadecimal digits each.
std::string UnitDigits(const std::wstring& text);
// The bytes, two hexadecimal digits each with blanks between.
std::string ByteDigits(std::span<const unsigned char> bytes);

// 84083200 as "5.3.2.0".
std::string VersionText(std::int64_t packed);
std::string GuidText(const GUID& guid);
// The identifier that text in braces is; nothing for any other text.
std::optional<GUID> ParseGuid(const std::wstring& text);
// The whole text as a number, with or without a point and zeros behind it.
std::optional<std::int64_t> ParseInteger(std::string_view text);

// "1 row", "2 rows".
std::string Count(std::size_t number, const std::string& noun);
// The text with blanks behind it, or before it, up to so many characters.
std::string PadRight(const std::string& text, std::size_t width);
std::string PadLeft(const std::string& text, std::size_t width);
// How many characters a text has.
std::size_t Width(const std::string& text);

} // namespace krtstore

#endif
