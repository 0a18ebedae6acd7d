#include "bss/system/base64.h"

#include "support/Hex.h"

#include <gtest/gtest.h>

#include <climits>
#include <optional>
#include <random>
#include <string>

namespace {

using namespace bss::base64;
std::string Text(std::string bytes, unsigned long flags) {
    int length = EncodeGetRequiredLength(static_cast<int>(bytes.size()), flags);
    std::string text(static_cast<std::size_t>(length) + 1, '#');
    EXPECT_TRUE(Encode(Bytes(bytes), static_cast<int>(bytes.size()), text.data(), &length, flags));
    EXPECT_EQ(static_cast<std::size_t>(length) + 1, text.size());
    EXPECT_EQ(text.back(), '#'); // not beyond its room
    text.pop_back();
    return text;
}

/// Decoded into this much room; nothing if it is refused.
std::optional<std::string> Data(const std::string& text, std::size_t room) {
    std::string bytes(room + 1, '#');
    int length = static_cast<int>(room);
    const bool decoded = Decode(text.data(), static_cast<int>(text.size()), Bytes(bytes), &length);
    EXPECT_EQ(bytes.back(), '#'); // not beyond it
    EXPECT_TRUE(decoded || length == 0);
    bytes.resize(static_cast<std::size_t>(length));
    return decoded ? bytes : std::optional<std::string>();
}
std::string Data(const std::string& text) {
    const int room = DecodeGetRequiredLength(static_cast<int>(text.size()));
    return Data(text, static_cast<std::size_t>(room)).value();
}

TEST(Base64, PublishedVectors) {
    const std::string texts[] = {"", "Zg==", "Zm8=", "Zm9v", "Zm9vYg==", "Zm9vYmE=", "Zm9vYmFy"};
    for (std::size_t length = 0; length <= 6; ++length) {
        const std::string plain("foobar", length);
        const std::string& padded = texts[length];
        const std::string bare = padded.substr(0, padded.find('='));
        EXPECT_EQ(Text(plain, 0), padded);
        EXPECT_EQ(Text(plain, NoPadding), bare);
        EXPECT_EQ(Data(padded), plain);
        EXPECT_EQ(Data(bare), plain);
    }
}

TEST(Base64, EveryLengthInLinesAndBack) {
    std::mt19937 generator(57);
    for (std::size_t length = 0; length < 400; ++length) {
        const std::string bytes = RandomBytes(generator, length);
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
    EXPECT_EQ(Data("Z m\t9\r\nv-_\x80\xff Y=g=="), "foob");
    EXPECT_EQ(Data("===="), "");
    EXPECT_EQ(Data("Z"), ""); // six bits are no byte
    EXPECT_EQ(Data("Zm9vY"), "foo");
    std::string sprinkled;
    std::mt19937 generator(3);
    const std::string bytes = RandomBytes(generator, 200);
    for (const char c : Text(bytes, 0)) {
        sprinkled += c;
        sprinkled += "\n !"[sprinkled.size() % 3];
    }
    EXPECT_EQ(Data(sprinkled), bytes);
}

TEST(Base64, NoInputAndNoRoomDoHarm) {
    std::mt19937 random(5);
    for (int round = 0; round < 3000; ++round) {
        std::string text(random() % 40, '\0');
        for (char& c : text) {
            c = round % 2 == 0 ? static_cast<char>(random() >> 8) : "ABCDabcd0123+/=\n"[random() % 16];
        }
        const std::string whole = Data(text);
        const auto room = static_cast<std::size_t>(random() % 30);
        EXPECT_EQ(Data(text, room), whole.size() <= room ? whole : std::optional<std::string>());
    }
    std::string bytes = RandomBytes(random, 100);
    std::string text(200, '#');
    for (const unsigned long flags : {0UL, NoPadding, NoLineBreaks, NoPadding | NoLineBreaks}) {
        int length = EncodeGetRequiredLength(100, flags) - 1;
        EXPECT_FALSE(Encode(Bytes(bytes), 100, text.data(), &length, flags));
        EXPECT_EQ(length, 0);
    }
    unsigned char target[10];
    int room = 200;
    EXPECT_FALSE(Encode(nullptr, 1, text.data(), &room, 0) || Encode(Bytes(bytes), 1, nullptr, &room, 0) ||
                 Encode(Bytes(bytes), 1, text.data(), nullptr, 0) ||
                 Encode(Bytes(bytes), -1, text.data(), &room, 0));
    room = 10;
    EXPECT_FALSE(Decode(nullptr, 1, target, &room) || Decode("Zm9v", 4, nullptr, &room) ||
                 Decode("Zm9v", 4, target, nullptr) || Decode("Zm9v", -1, target, &room));
    room = -1;
    EXPECT_FALSE(Decode("Zm9v", 4, target, &room));

    EXPECT_EQ(EncodeGetRequiredLength(-1, 0), 0);
    EXPECT_EQ(EncodeGetRequiredLength(INT_MAX, 0), INT_MAX);
    EXPECT_EQ(DecodeGetRequiredLength(77), 77);
    room = INT_MAX;
    EXPECT_FALSE(Encode(Bytes(bytes), INT_MAX, text.data(), &room, 0)); // its text has no length
}

} // namespace
