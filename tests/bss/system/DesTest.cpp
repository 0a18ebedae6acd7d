#include "bss/system/des.h"

#include "support/Hex.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace {

/// Single DES: three passes with one key.
std::string Des(const std::string& key, std::string block, short mode = 0) {
    std::string keys = key + key + key;
    des3key(Bytes(keys), mode);
    Ddes(Bytes(block), Bytes(block));
    return block;
}

/// Bit `i`, 0 the highest, of 64 on a ground of parity bits or zeros.
std::string OneBit(int i, char ground) {
    std::string bytes(8, ground);
    bytes[static_cast<std::size_t>(i) / 8] |= static_cast<char>(0x80 >> i % 8);
    return bytes;
}

// NIST SP 800-17, variable plaintext: the key is 0101010101010101, the i-th text has the i-th bit alone.
const char* const variableText =
    "95F8A5E5DD31D900DD7F121CA50156192E8653104F3834EA4BD388FF6CD81D4F20B9E767B2FB145655579380D77138EF"
    "6CC5DEFAAF04512F0D9F279BA5D87260D9031B0271BD5A0A424250B37C3DD951B8061B7ECD9A21E5F15D0F286B65BD28"
    "ADD0CC8D6E5DEBA1E6D5F82752AD63D1ECBFE3BD3F591A5EF356834379D165CD2B9F982F20037FA9889DE068A16F0BE6"
    "E19E275D846A1298329A8ED523D71AECE7FCE22557D23C9712A9F5817FF2D65DA484C3AD38DC9C19FBE00A8A1EF8AD72"
    "750D07940752136364FEED9C724C2FAFF02B263B328E2B609D64555A9A10B852D106FF0BED5255D7E1652C6B138C64A5"
    "E428581186EC8F46AEB5F5EDE22D1A36E943D7568AEC0C5CDF98C8276F54B04BB160E4680F6C696FFA0752B07D9C4AB8"
    "CA3A2B036DBC85025E0905517BB59BCF814EEB3B91D907264D49DB1532919C9F25EB5FC3F8CF0621AB6A20C0620D1C6F"
    "79E90DBC98F92CCA866ECEDD8072BB0E8B54536F2F3E64A8EA51D3975595B86BCAFFC6AC4542DE318DD45A2DDF90796C"
    "1029D55E880EC2D05D86CB23639DBEA91D1CA853AE7C0C5FCE332329248F32288405D1ABE24FB942E643D78090CA4207"
    "48221B9937748A23DD7C0BBD61FAFD542FBC291A570DB5C4E07C30D7E4E26E120953E2258E8E90A15B711BC4CEEBF2EE"
    "CC083F1E6D9E85F6D2FD8867D50D2DFE06E7EA22CE92708F166B40B44ABA4BD6";

// Likewise, variable key: the text is zero, the i-th key has the i-th bit that is not parity.
const char* const variableKey =
    "95A8D72813DAA94D0EEC1487DD8C26D57AD16FFB79C45926D3746294CA6A6CF3809F5F873C1FD761C02FAFFEC989D1FC"
    "4615AA1D33E72F102055123350C00858DF3B99D6577397C831FE17369B5288C9DFDD3CC64DAE1642178C83CE2B399D94"
    "50F636324A9B7F80A8468EE3BC18F06DA2DC9E92FD3CDE92CAC09F797D03128790BA680B22AEB525CE7A24F350E280B6"
    "882BFF0AA01A0B8725610288924511C2C71516C29C75D1705199C29A52C9F059C22F0A294A71F29FEE371483714C02EA"
    "A81FBD448F9E522F4F644C92E192DFED1AFA9A66A6DF92AEB3C1CC715CB879D819D032E64AB0BD8B3CFAA7A7DC8720DC"
    "B7265F7F447AC6F39DB73B3C0D163F548181B65BABF4A97593C9B64042EAA24055705308297055928638809E878787A0"
    "41B9A79AF79AC2087A9BE42F2009A89229038D56BA6D27455495C6ABF1E5DF51AE13DBD561488933024D1FFA8904E389"
    "D1399712F99BF02E14C1D7C1CFFEC79E1DE5279DAE3BED6FE941A33F85501303DA99DBBC9A03F379B7FC92F91D8E92E9"
    "AE8E5CAA3CA04E859CC62DF43B6EED74D863DBB5C59A91A0A1AB2190545B91D70875041E64C570F75A594528BEBEF1CC"
    "FCDB3291DE21F0C0869EFD7F9F265A09";

// NIST SP 800-17, substitution tables: together they use each entry of the S-boxes. Key, text, result.
const char* const substitution[][3] = {
    {"7CA110454A1A6E57", "01A1D6D039776742", "690F5B0D9A26939B"},
    {"0131D9619DC1376E", "5CD54CA83DEF57DA", "7A389D10354BD271"},
    {"07A1133E4A0B2686", "0248D43806F67172", "868EBB51CAB4599A"},
    {"3849674C2602319E", "51454B582DDF440A", "7178876E01F19B2A"},
    {"04B915BA43FEB5B6", "42FD443059577FA2", "AF37FB421F8C4095"},
    {"0113B970FD34F2CE", "059B5E0851CF143A", "86A560F10EC6D85B"},
    {"0170F175468FB5E6", "0756D8E0774761D2", "0CD3DA020021DC09"},
    {"43297FAD38E373FE", "762514B829BF486A", "EA676B2CB7DB2B7A"},
    {"07A7137045DA2A16", "3BDD119049372802", "DFD64A815CAF1A0F"},
    {"04689104C2FD3B2F", "26955F6835AF609A", "5C513C9C4886C088"},
    {"37D06BB516CB7546", "164D5E404F275232", "0A2AEEAE3FF4AB77"},
    {"1F08260D1AC2465E", "6B056E18759F5CCA", "EF1BF03E5DFA575A"},
    {"584023641ABA6176", "004BD6EF09176062", "88BF0DB6D70DEE56"},
    {"025816164629B007", "480D39006EE762F2", "A1F9915541020B56"},
    {"49793EBC79B3258F", "437540C8698F3CFA", "6FBF1CAFCFFD0556"},
    {"4FB05E1515AB73A7", "072D43A077075292", "2F22E49BAB7CA1AC"},
    {"49E95D6D4CA229BF", "02FE55778117F12A", "5A6B612CC26CCE4A"},
    {"018310DC409B26D6", "1D9D5C5018F728C2", "5F4C038ED12B2E41"},
    {"1C587F1C13924FEF", "305532286D6F295A", "63FAC0D034D9F793"},
};

TEST(Des, GivesThePublishedAnswers) {
    const std::string texts = FromHex(variableText);
    const std::string parity(8, '\x01');
    for (int i = 0; i < 64; ++i) {
        const std::string expected = texts.substr(static_cast<std::size_t>(8 * i), 8);
        EXPECT_EQ(ToHex(Des(parity, OneBit(i, 0))), ToHex(expected)) << i;
        // The inverse permutation: texts and results exchanged.
        EXPECT_EQ(ToHex(Des(parity, expected, 1)), ToHex(OneBit(i, 0))) << i;
    }
    const std::string keys = FromHex(variableKey);
    for (int i = 0; i < 56; ++i) {
        EXPECT_EQ(ToHex(Des(OneBit(i / 7 * 8 + i % 7, 1), std::string(8, 0))),
                  ToHex(keys.substr(static_cast<std::size_t>(8 * i), 8)))
            << i;
    }
    for (const auto& row : substitution) {
        EXPECT_EQ(ToHex(Des(FromHex(row[0]), FromHex(row[1]))), row[2]);
        EXPECT_EQ(ToHex(Des(FromHex(row[0]), FromHex(row[2]), 1)), row[1]);
    }
}

// R. Rivest, "Testing implementations of DES", 1985: each text is its own key; by turns encrypted and
// decrypted.
TEST(Des, PassesRivestsTest) {
    std::string x = FromHex("9474B8E8C73BCA7D");
    for (int i = 0; i < 16; ++i) {
        x = Des(x, x, static_cast<short>(i % 2));
    }
    EXPECT_EQ(ToHex(x), "1B1A2DDB4C642438");
}

TEST(TripleDes, GivesThePublishedAnswers) {
    // NIST SP 800-67, appendix B
    std::string key = FromHex("0123456789ABCDEF23456789ABCDEF01456789ABCDEF0123");
    std::string text = "The qufck brown fox jump";
    des3key(Bytes(key), 0);
    D2des(Bytes(text), Bytes(text));
    Ddes(Bytes(text) + 16, Bytes(text) + 16);
    EXPECT_EQ(ToHex(text), "A826FD8CE53B855FCCE21C8112256FE668D5C05DD9B6B900");
    des3key(Bytes(key), 1);
    Ddes(Bytes(text), Bytes(text));
    D2des(Bytes(text) + 8, Bytes(text) + 8);
    EXPECT_EQ(text, "The qufck brown fox jump");
}

TEST(TripleDes, OfTwoKeysIsThatOfThreeWithTheFirstAgain) {
    std::string three = "-first--other--first-...";
    three.replace(16, 8, three.substr(0, 8));
    for (const short mode : {short{0}, short{1}}) {
        unsigned long expected[96];
        unsigned long got[96];
        des3key(Bytes(three), mode);
        cp3key(expected);
        deskey(Bytes(three) + 8, 0);
        des2key(Bytes(three), mode);
        cp3key(got);
        EXPECT_EQ(std::memcmp(expected, got, sizeof(got)), 0) << mode;
    }
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
    const std::string phrases[] = {"", "open sesame",
                                   "\xC3\xBC"
                                   "a phrase that is longer than any of the keys"};
    const struct {
        void (*make)(char*, unsigned char*);
        const char* keys[3]; // of each phrase
    } rows[] = {
        {&makekey, {"56CC09E7CFDC4CEF", "51385BC28E606AE9", "F14097500EF01B72"}},
        {&make2key,
         {"1A4D672DCA6CB3351FD1B02B237AF9AE", "B9F97A7BDDD9B7AB393CC8A1F646AEC4",
          "4D6FEA4A50CD52D424D379333BB399B9"}},
        {&make3key,
         {"691747FD88B6D228E7FAA57300B2FD22915A894F3E5DE2FB",
          "FFDC7EAB7AB0757AB16178FC9ADFB7A2915A894F3E5DE2FB",
          "BA219C85F855FEF072DF5483CE3BB10B33415050C4516548"}},
    };
    std::string key = "24 bytes make three keys";
    des3key(Bytes(key), 0);
    unsigned long before[96];
    cp3key(before);
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < 3; ++i) {
            const std::string expected = FromHex(row.keys[i]);
            std::string phrase = phrases[i] + '\0' + "behind";
            std::string made(expected.size() + 1, 'x');
            row.make(phrase.data(), Bytes(made));
            EXPECT_EQ(ToHex(made), ToHex(expected + 'x'));
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
