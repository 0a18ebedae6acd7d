#include "bss/system/des.h"

#include "support/Hex.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace {

// R. Rivest, "Testing implementations of DES", 1985: each text is its own key; by turns encrypted and
// decrypted. No single fault of a table passes.
TEST(Des, PassesRivestsTest) {
    std::string x = FromHex("9474B8E8C73BCA7D");
    for (int i = 0; i < 16; ++i) {
        std::string keys = x + x + x; // three passes with one key are one
        des3key(Bytes(keys), static_cast<short>(i % 2));
        Ddes(Bytes(x), Bytes(x));
    }
    EXPECT_EQ(ToHex(x), "1B1A2DDB4C642438");
}

TEST(DesSchedules, TakeTheLower32BitsOfEachWord) {
    std::string key = "24 bytes make three keys";
    std::string expected = "8 bytes.";
    std::string got = expected;
    unsigned long words[96];
    des3key(Bytes(key), 0);
    Ddes(Bytes(expected), Bytes(expected));
    cp3key(words);
    for (unsigned long& word : words) {
        ASSERT_LE(word, 0xFFFFFFFFUL);
        word |= std::numeric_limits<unsigned long>::max() << 16U << 16U;
    }
    des3key(Bytes(key), 1);
    use3key(words);
    Ddes(Bytes(got), Bytes(got));
    EXPECT_EQ(ToHex(got), ToHex(expected));
}

TEST(DesKeys, OfPassPhrasesWipeThePhraseAndLeaveTheSchedules) {
    const std::string phrases[] = {"", "\xC3\xBC"
                                       "a phrase that is longer than any of the keys"};
    const struct {
        void (*make)(char*, unsigned char*);
        const char* keys[2]; // of each phrase
    } rows[] = {
        {&makekey, {"56CC09E7CFDC4CEF", "F14097500EF01B72"}},
        {&make2key, {"1A4D672DCA6CB3351FD1B02B237AF9AE", "4D6FEA4A50CD52D424D379333BB399B9"}},
        {&make3key,
         {"691747FD88B6D228E7FAA57300B2FD22915A894F3E5DE2FB",
          "BA219C85F855FEF072DF5483CE3BB10B33415050C4516548"}},
    };
    std::string key = "24 bytes make three keys";
    des3key(Bytes(key), 0);
    unsigned long before[96];
    cp3key(before);
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < 2; ++i) {
            std::string phrase = phrases[i] + '\0' + "behind";
            std::string made(std::strlen(row.keys[i]) / 2 + 1, 'x');
            row.make(phrase.data(), Bytes(made));
            EXPECT_EQ(ToHex(made), row.keys[i] + ToHex("x"));
            EXPECT_EQ(phrase, std::string(phrases[i].size() + 1, '\0') + "behind");
        }
    }
    unsigned long after[96];
    cp3key(after);
    EXPECT_EQ(std::memcmp(before, after, sizeof(after)), 0);
}

TEST(DesNames, AreThereForAProgramInC) {
    EXPECT_EQ(std::system(DES_PROGRAM), 0);
}

} // namespace
