#include "common/Failure.h"

namespace tools {

namespace {

std::string QuoteUpTo(const std::string& text, std::size_t longest) {
    constexpr char kHex[] = "0123456789abcdef";
    const auto isContinuation = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; };
    std::string quoted = "'";
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i >= longest && !isContinuation(text[i])) {
            return quoted + "...'";
        }
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < 0x20U || byte == 0x7FU) {
            quoted += {'\\', 'x', kHex[byte >> 4U], kHex[byte & 0xFU]};
        } else {
            quoted += text[i];
        }
    }
    return quoted + "'";
}

} // namespace

std::string Quote(const std::string& text) {
    return QuoteUpTo(text, text.size());
}

std::string QuoteStart(const std::string& text) {
    return QuoteUpTo(text, 80);
}

std::filesystem::path PathOf(const std::string& utf8) {
    return {std::u8string(utf8.begin(), utf8.end())};
}

} // namespace tools
