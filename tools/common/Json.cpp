#include "common/Json.h"

#include <algorithm>

namespace tools {

namespace {

std::string Text(const Json& value, std::size_t depth, bool isIndented) {
    if (value.is_binary()) {
        return {value.get_binary().begin(), value.get_binary().end()};
    }
    if (!value.is_structured()) {
        return value.dump();
    }
    const bool isBroken = isIndented && std::any_of(value.begin(), value.end(),
                                                    [](const Json& part) { return part.is_structured(); });
    const std::string lineEnd = "\n" + std::string(2 * depth, ' ');
    const std::string separator = isBroken ? "," + lineEnd + "  " : ", ";
    std::string parts;
    for (const auto& part : value.items()) {
        parts += parts.empty() ? "" : separator;
        parts += value.is_object() ? Json(part.key()).dump() + ": " : "";
        parts += Text(part.value(), depth + 1, isIndented);
    }
    parts = isBroken ? lineEnd + "  " + parts + lineEnd : parts;
    return value.is_object() ? "{" + parts + "}" : "[" + parts + "]";
}

} // namespace

Json Token(std::string_view json) {
    return Json::binary({json.begin(), json.end()});
}

std::string OneLine(const Json& value) {
    return Text(value, 0, false);
}

std::string Indented(const Json& value) {
    return Text(value, 0, true);
}

} // namespace tools
