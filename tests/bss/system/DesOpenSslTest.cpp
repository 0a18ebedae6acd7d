// The DES functions beside those of OpenSSL.

#include <gtest/gtest.h>

#ifdef _WIN32

TEST(DesBesideOpenSsl, AgreesForRandomKeysAndBlocks) {
    GTEST_SKIP() << "OpenSSL is there for Linux only";
}
TEST(DesBesideOpenSsl, AgreesInTheMonteCarloTests) {
    GTEST_SKIP() << "OpenSSL is there for Linux only";
}

#else

#define OPENSSL_SUPPRESS_DEPRECATED
#include "bss/system/WEncryption.h"
#include "bss/system/des.h"

#include "support/Hex.h"

#include <cstring>
#include <openssl/des.h>
#include <random>
#include <string>

namespace {

/// Triple DES by OpenSSL.
std::string Peer(const std::string& key, const std::string& text, bool encrypt) {
    DES_key_schedule keys[3];
    for (std::size_t i = 0; i < 3; ++i) {
        DES_cblock part;
        std::memcpy(part, key.data() + 8 * i, 8);
        DES_set_key_unchecked(&part, &keys[i]);
    }
    std::string result(text.size(), '\0');
    for (std::size_t i = 0; i < text.size(); i += 8) {
        DES_cblock from;
        DES_cblock into;
        std::memcpy(from, text.data() + i, 8);
        DES_ecb3_encrypt(&from, &into, &keys[0], &keys[1], &keys[2], encrypt ? DES_ENCRYPT : DES_DECRYPT);
        std::memcpy(result.data() + i, into, 8);
    }
    return result;
}

std::string Random(std::mt19937& generator, std::size_t size) {
    std::string bytes;
    while (bytes.size() < size) {
        bytes += static_cast<char>(generator());
    }
    return bytes;
}

TEST(DesBesideOpenSsl, AgreesForRandomKeysAndBlocks) {
    std::mt19937 generator(1977);
    for (int i = 0; i < 20000; ++i) {
        std::string key = Random(generator, 24);
        std::string text = Random(generator, 16);
        const short mode = static_cast<short>(i % 2);
        std::string two(16, '\0');
        std::string one(8, '\0');

        des3key(Bytes(key), mode);
        D2des(Bytes(text), Bytes(two));
        Ddes(Bytes(text) + 8, Bytes(one));
        const std::string expected = Peer(key, text, mode == 0);
        ASSERT_EQ(ToHex(two), ToHex(expected));
        ASSERT_EQ(ToHex(one), ToHex(expected.substr(8)));

        des2key(Bytes(key), mode);
        D2des(Bytes(text), Bytes(two));
        ASSERT_EQ(ToHex(two), ToHex(Peer(key.substr(0, 16) + key.substr(0, 8), text, mode == 0)));

        // The first pass alone: the others undo each other.
        unsigned long words[96];
        std::string keys = key.substr(0, 8) + key.substr(8, 8) + key.substr(8, 8);
        des3key(Bytes(keys), 0);
        deskey(Bytes(key), mode);
        cp3key(words);
        Ddes(Bytes(text), Bytes(one));
        const std::string same = key.substr(0, 8) + key.substr(0, 8) + key.substr(0, 8);
        ASSERT_EQ(ToHex(one), ToHex(Peer(same, text.substr(0, 8), mode == 0)));
    }
}

TEST(DesBesideOpenSsl, AgreesForTextsOfAllLengths) {
    const std::string key(reinterpret_cast<const char*>(bss::WEncryption::m_Key), 24);
    std::mt19937 generator(1999);
    for (std::size_t size = 0; size <= 200; ++size) {
        const std::string text = Random(generator, size);
        std::string padded = text;
        padded.resize((size + 7) / 8 * 8, '\0');
        ASSERT_EQ(ToHex(bss::WEncryption::Encrypt(text)), ToHex(Peer(key, padded, true)));
        ASSERT_EQ(ToHex(bss::WEncryption::Decrypt(text)), ToHex(Peer(key, padded, false)));
    }
}

// NIST SP 800-17 and 800-20, modes test in ECB: 400 times 10,000 blocks, each result the next text; then the
// keys take the last results in. Here for single DES (equal keys) and for three keys, in both directions
// (decryption: a tenth).
TEST(DesBesideOpenSsl, AgreesInTheMonteCarloTests) {
    for (const bool triple : {false, true}) {
        for (const bool encrypt : {true, false}) {
            std::string key = FromHex("0113B970FD34F2CE0113B970FD34F2CE0113B970FD34F2CE");
            if (triple) {
                key = FromHex("0123456789ABCDEF23456789ABCDEF01456789ABCDEF0123");
            }
            std::string text = FromHex("059B5E0851CF143A");
            for (int outer = 0; outer < (encrypt ? 400 : 40); ++outer) {
                std::string results[3];
                std::string peer = text;
                DES_key_schedule keys[3];
                for (std::size_t i = 0; i < 3; ++i) {
                    DES_set_key_unchecked(reinterpret_cast<const_DES_cblock*>(key.data() + 8 * i), &keys[i]);
                }
                des3key(Bytes(key), encrypt ? 0 : 1);
                for (int inner = 0; inner < 10000; ++inner) {
                    Ddes(Bytes(text), Bytes(text));
                    auto* const block = reinterpret_cast<DES_cblock*>(peer.data());
                    DES_ecb3_encrypt(block, block, &keys[0], &keys[1], &keys[2],
                                     encrypt ? DES_ENCRYPT : DES_DECRYPT);
                    if (inner >= 9997) {
                        results[static_cast<std::size_t>(9999 - inner)] = text;
                    }
                }
                ASSERT_EQ(ToHex(text), ToHex(peer)) << outer;
                for (std::size_t i = 0; i < key.size(); ++i) {
                    const char taken = results[triple ? i / 8 : 0][i % 8];
                    key[i] = static_cast<char>(key[i] ^ taken);
                }
                DES_set_odd_parity(reinterpret_cast<DES_cblock*>(key.data()));
                DES_set_odd_parity(reinterpret_cast<DES_cblock*>(key.data() + 8));
                DES_set_odd_parity(reinterpret_cast<DES_cblock*>(key.data() + 16));
            }
        }
    }
}

} // namespace

#endif
