#include "bss/system/base64.h"

#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace bss::base64 {

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr int kGroupsOfLine = 19;
constexpr std::uint8_t kNoDigit = 0xFF;

// Two characters for each value of 12 bits: one look-up gives half of a group.
constexpr auto kPairs = [] {
    std::array<std::array<char, 2>, 4096> pairs{};
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        pairs[i] = {kAlphabet[i >> 6], kAlphabet[i & 63]};
    }
    return pairs;
}();

constexpr auto kDigits = [] {
    std::array<std::uint8_t, 256> digits{};
    digits.fill(kNoDigit);
    for (std::uint8_t i = 0; i < 64; ++i) {
        digits[static_cast<unsigned char>(kAlphabet[i])] = i;
    }
    return digits;
}();

// The value of each character, shifted to each of the four places of a group. kBad, a bit above the 24 of a
// group, marks characters outside the alphabet.
constexpr std::uint32_t kBad = 0x01000000;
constexpr auto kPlaced = [] {
    std::array<std::array<std::uint32_t, 256>, 4> placed{};
    for (std::size_t place = 0; place < 4; ++place) {
        for (std::size_t c = 0; c < 256; ++c) {
            placed[place][c] = kDigits[c] == kNoDigit ? kBad : std::uint32_t{kDigits[c]} << (6 * (3 - place));
        }
    }
    return placed;
}();

char* EncodeGroups(const unsigned char* source, int groups, char* target) {
    for (; groups > 0; --groups, source += 3, target += 4) {
        std::memcpy(target, &kPairs[static_cast<std::size_t>(source[0] << 4 | source[1] >> 4)], 2);
        std::memcpy(target + 2, &kPairs[static_cast<std::size_t>((source[1] & 15) << 8 | source[2])], 2);
    }
    return target;
}

} // namespace

int EncodeGetRequiredLength(int length, unsigned long flags) {
    if (length < 0) {
        return 0;
    }
    const std::int64_t groups = length / 3;
    const int rest = length % 3;
    std::int64_t required = 4 * groups;
    if (rest != 0) {
        required += (flags & NoPadding) != 0 ? rest + 1 : 4;
    }
    if ((flags & NoLineBreaks) == 0) {
        required += 2 * (groups / kGroupsOfLine);
    }
    return required > INT_MAX ? INT_MAX : static_cast<int>(required);
}

bool Encode(const unsigned char* source, int length, char* target, int* targetLength, unsigned long flags) {
    if (source == nullptr || target == nullptr || targetLength == nullptr) {
        return false;
    }
    const int room = *targetLength;
    *targetLength = 0;
    const int required = EncodeGetRequiredLength(length, flags);
    if (length < 0 || required == INT_MAX || room < required) {
        return false;
    }
    int groups = length / 3;
    char* to = target;
    if ((flags & NoLineBreaks) == 0) {
        for (; groups >= kGroupsOfLine;
             groups -= kGroupsOfLine, source += std::ptrdiff_t{3} * kGroupsOfLine) {
            to = EncodeGroups(source, kGroupsOfLine, to);
            *to++ = '\r';
            *to++ = '\n';
        }
    }
    to = EncodeGroups(source, groups, to);
    source += std::ptrdiff_t{3} * groups;
    const int rest = length % 3;
    if (rest != 0) {
        const unsigned second = rest == 2 ? source[1] : 0U;
        *to++ = kAlphabet[source[0] >> 2];
        *to++ = kAlphabet[(source[0] & 3U) << 4 | second >> 4];
        if (rest == 2) {
            *to++ = kAlphabet[(second & 15U) << 2];
        }
        if ((flags & NoPadding) == 0) {
            for (int i = rest; i < 3; ++i) {
                *to++ = '=';
            }
        }
    }
    *targetLength = static_cast<int>(to - target);
    return true;
}

int DecodeGetRequiredLength(int length) {
    return length;
}

bool Decode(const char* source, int length, unsigned char* target, int* targetLength) {
    if (source == nullptr || target == nullptr || targetLength == nullptr) {
        return false;
    }
    const int room = *targetLength;
    *targetLength = 0;
    if (length < 0 || room < 0) {
        return false;
    }
    const auto* from = reinterpret_cast<const unsigned char*>(source);
    const unsigned char* const end = from + length;
    unsigned char* to = target;
    const unsigned char* const roomEnd = target + room;
    std::uint32_t bits = 0;
    int digits = 0;
    while (from != end) {
        // Fast path: whole groups without a character to skip.
        if (digits == 0) {
            while (end - from >= 4 && roomEnd - to >= 3) {
                const std::uint32_t group =
                    kPlaced[0][from[0]] | kPlaced[1][from[1]] | kPlaced[2][from[2]] | kPlaced[3][from[3]];
                if ((group & kBad) != 0) {
                    break;
                }
                to[0] = static_cast<unsigned char>(group >> 16);
                to[1] = static_cast<unsigned char>(group >> 8);
                to[2] = static_cast<unsigned char>(group);
                to += 3;
                from += 4;
            }
            if (from == end) {
                break;
            }
        }
        const std::uint8_t digit = kDigits[*from++];
        if (digit == kNoDigit) {
            continue;
        }
        bits = bits << 6 | digit;
        if (++digits == 4) {
            if (roomEnd - to < 3) {
                return false;
            }
            *to++ = static_cast<unsigned char>(bits >> 16);
            *to++ = static_cast<unsigned char>(bits >> 8);
            *to++ = static_cast<unsigned char>(bits);
            bits = 0;
            digits = 0;
        }
    }
    const int left = digits == 0 ? 0 : digits - 1;
    if (roomEnd - to < left) {
        return false;
    }
    bits <<= 6 * (4 - digits);
    for (int i = 0; i < left; ++i) {
        *to++ = static_cast<unsigned char>(bits >> (16 - 8 * i));
    }
    *targetLength = static_cast<int>(to - target);
    return true;
}

} // namespace bss::base64
