#include "InputError.h"

namespace correlogram {

std::string Quote(const std::string& text) {
    constexpr std::size_t kLongest = 80;
    constexpr char kHex[] = "0123456789abcdef";
    const auto isContinuation = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; };
    std::string quoted = "'";
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i >= kLongest && !isContinuation(text[i])) {
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

} // namespace correlogram
