// JSON documents of the tools: nlohmann's values, written in the tools' layout and digits.

#ifndef TOOLS_COMMON_JSON_H
#define TOOLS_COMMON_JSON_H

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

namespace tools {

/// Members stay in the order in which they were added. A string has to be UTF-8.
using Json = nlohmann::ordered_json;

/// Returns a value that is written as it stands: a number in digits of the tool's choice, or a text with
/// halves of surrogate pairs, which UTF-8 has not.
Json Token(std::string_view json);

/// Returns the document in one line, with a blank behind each comma and colon.
std::string OneLine(const Json& value);
/// Returns the document with two blanks for each level; what holds no other object or array is one line.
std::string Indented(const Json& value);

} // namespace tools

#endif
