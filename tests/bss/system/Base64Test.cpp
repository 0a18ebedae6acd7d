#include "bss/system/base64.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace bss::base64;
using Bytes = std::vector<unsigned char>;

std::string Text(const Bytes& bytes, unsigned long flags) {
    int length = EncodeGetRequiredLength(static_cast<int>(bytes.size()), flags);
    std::string text(static_cast<std::size_t>(length) + 1, '#');
    static constexpr unsigned char nothing = 0;
    EXPECT_TRUE(Encode(bytes.empty() ? &nothing : bytes.data(), static_cast<int>(bytes.size()), text.data(),
                       &length, flags));
    EXPECT_EQ(static_cast<std::size_t>(length) + 1, text.size());
    EXPECT_EQ(text.back(), '#'); // not beyond its room
    text.pop_back();
    return text;
}

/// Decoded into so much room; nothing if it is refused.
std::optional<Bytes> Data(const std::string& text, std::size_t room) {
    Bytes bytes(room + 1, 0xEE);
    int length = static_cast<int>(room);
    const bool decoded = Decode(text.data(), static_cast<int>(text.size()), bytes.data(), &length);
    EXPECT_EQ(bytes.back(), 0xEE); // not beyond it
    EXPECT_TRUE(decoded || length == 0);
    bytes.resize(static_cast<std::size_t>(length));
    return decoded ? bytes : std::optional<Bytes>();
}
Bytes Data(const std::string& text) {
    const int room = DecodeGetRequiredLength(static_cast<int>(text.size()));
    return Data(text, static_cast<std::size_t>(room)).value();
}

Bytes BytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

Bytes RandomBytes(std::size_t length, unsigned seed) {
    std::minstd_rand random(seed);
    Bytes bytes(length);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<unsigned char>(random() >> 8); });
    return bytes;
}

TEST(Base64, PublishedVectors) {
    const char* const vectors[][3] = {{"", "", ""},
                                      {"f", "Zg==", "Zg"},
                                      {"fo", "Zm8=", "Zm8"},
                                      {"foo", "Zm9v", "Zm9v"},
                                      {"foob", "Zm9vYg==", "Zm9vYg"},
                                      {"fooba", "Zm9vYmE=", "Zm9vYmE"},
                                      {"foobar", "Zm9vYmFy", "Zm9vYmFy"}};
    for (const auto& [plain, padded, bare] : vectors) {
        EXPECT_EQ(Text(BytesOf(plain), 0), padded);
        EXPECT_EQ(Text(BytesOf(plain), NoPadding), bare);
        EXPECT_EQ(Data(padded), BytesOf(plain));
        EXPECT_EQ(Data(bare), BytesOf(plain));
    }
}

TEST(Base64, EveryLengthInLinesAndBack) {
    for (std::size_t length = 0; length < 400; ++length) {
        const Bytes bytes = RandomBytes(length, static_cast<unsigned>(length));
        std::string lines = Text(bytes, NoLineBreaks);
        EXPECT_EQ(Data(lines), bytes) << length;
        // Full lines end in a line break, the rest does not.
        for (std::size_t i = 0; i < length / 57; ++i) {
            lines.insert(78 * i + 76, "\r\n");
        }
        EXPECT_EQ(Text(bytes, 0), lines) << length;
        EXPECT_EQ(Data(lines), bytes) << length;
    }
}

TEST(Base64, OtherCharactersAreSkippedWhereverTheyStand) {
    EXPECT_EQ(Data("Z m\t9\r\nv-_\x80\xff Y=g=="), BytesOf("foob"));
    EXPECT_EQ(Data("===="), Bytes{});
    EXPECT_EQ(Data("Z"), Bytes{}); // six bits are no byte
    EXPECT_EQ(Data("Zm9vY"), BytesOf("foo"));
    std::string sprinkled;
    const Bytes bytes = RandomBytes(200, 3);
    for (const char c : Text(bytes, 0)) {
        sprinkled += c;
        sprinkled += "\n !"[sprinkled.size() % 3];
    }
    EXPECT_EQ(Data(sprinkled), bytes);
}

TEST(Base64, NoInputAndNoRoomDoHarm) {
    std::minstd_rand random(5);
    for (int round = 0; round < 3000; ++round) {
        std::string text(random() % 40, '\0');
        for (char& c : text) {
            c = round % 2 == 0 ? static_cast<char>(random() >> 8) : "ABCDabcd0123+/=\n"[random() % 16];
        }
        const Bytes whole = Data(text);
        const auto room = static_cast<std::size_t>(random() % 30);
        EXPECT_EQ(Data(text, room), whole.size() <= room ? whole : std::optional<Bytes>());
    }
    const Bytes bytes = RandomBytes(100, 1);
    std::string text(200, '#');
    for (const unsigned long flags : {0UL, NoPadding, NoLineBreaks, NoPadding | NoLineBreaks}) {
        int length = EncodeGetRequiredLength(100, flags) - 1;
        EXPECT_FALSE(Encode(bytes.data(), 100, text.data(), &length, flags));
        EXPECT_EQ(length, 0);
    }
    unsigned char target[10];
    int room = 200;
    EXPECT_FALSE(Encode(nullptr, 1, text.data(), &room, 0) || Encode(bytes.data(), 1, nullptr, &room, 0) ||
                 Encode(bytes.data(), 1, text.data(), nullptr, 0) ||
                 Encode(bytes.data(), -1, text.data(), &room, 0));
    room = 10;
    EXPECT_FALSE(Decode(nullptr, 1, target, &room) || Decode("Zm9v", 4, nullptr, &room) ||
                 Decode("Zm9v", 4, target, nullptr) || Decode("Zm9v", -1, target, &room));
    room = -1;
    EXPECT_FALSE(Decode("Zm9v", 4, target, &room));

    EXPECT_EQ(EncodeGetRequiredLength(-1, 0), 0);
    EXPECT_EQ(EncodeGetRequiredLength(INT_MAX, 0), INT_MAX);
    EXPECT_EQ(DecodeGetRequiredLength(77), 77);
    room = INT_MAX;
    EXPECT_FALSE(Encode(bytes.data(), INT_MAX, text.data(), &room, 0)); // its text has no length
}

} // namespace
