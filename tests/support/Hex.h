// Bytes of a string, their hexadecimal form, and bytes by chance.

#ifndef TESTS_SUPPORT_HEX_H
#define TESTS_SUPPORT_HEX_H

#include <random>
#include <string>
#include <string_view>

inline unsigned char* Bytes(std::string& text) {
    return reinterpret_cast<unsigned char*>(text.data());
}

inline std::string ToHex(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        text += "0123456789ABCDEF"[static_cast<unsigned char>(c) >> 4];
        text += "0123456789ABCDEF"[c & 15];
    }
    return text;
}

inline std::string FromHex(std::string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(std::string(text.substr(i, 2)), nullptr, 16));
    }
    return bytes;
}

inline std::string RandomBytes(std::mt19937& generator, std::size_t size) {
    std::string bytes(size, '\0');
    for (char& c : bytes) {
        c = static_cast<char>(generator());
    }
    return bytes;
}

#endif
