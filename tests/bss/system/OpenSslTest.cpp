// DES, encryption and base64 beside OpenSSL.

#include "support/Expect.h"

#ifdef _WIN32

SKIPPED_TEST(DesBesideOpenSsl, AgreesForRandomKeysAndBlocks, "OpenSSL is there for Linux only")
SKIPPED_TEST(EncryptionBesideOpenSsl, AgreesForTextsOfAllLengths, "OpenSSL is there for Linux only")
SKIPPED_TEST(Base64BesideOpenSsl, AgreesForTextsOfAllLengths, "OpenSSL is there for Linux only")

#else

#define OPENSSL_SUPPRESS_DEPRECATED
#include "bss/system/WEncryption.h"
#include "bss/system/base64.h"
#include "bss/system/des.h"
#include "support/Hex.h"

#include <cstring>
#include <openssl/des.h>
#include <openssl/evp.h>
#include <string>

namespace {

/// Triple DES by OpenSSL.
std::string Peer(std::string key, const std::string& text, bool encrypt) {
    DES_key_schedule keys[3];
    for (std::size_t i = 0; i < 3; ++i) {
        DES_set_key_unchecked(reinterpret_cast<DES_cblock*>(key.data() + 8 * i), &keys[i]);
    }
    std::string result(text);
    for (std::size_t i = 0; i < text.size(); i += 8) {
        auto* const block = reinterpret_cast<DES_cblock*>(result.data() + i);
        DES_ecb3_encrypt(block, block, &keys[0], &keys[1], &keys[2], encrypt ? DES_ENCRYPT : DES_DECRYPT);
    }
    return result;
}

TEST(DesBesideOpenSsl, AgreesForRandomKeysAndBlocks) {
    std::mt19937 generator(1977);
    for (int i = 0; i < 2000; ++i) {
        std::string key = RandomBytes(generator, 24);
        std::string text = RandomBytes(generator, 16);
        const auto mode = static_cast<short>(i % 2);
        std::string two(16, '\0');
        std::string one(8, '\0');

        des3key(Bytes(key), mode);
        D2des(Bytes(text), Bytes(two));
        Ddes(Bytes(text) + 8, Bytes(one));
        const std::string expected = Peer(key, text, mode == 0);
        ASSERT_EQ(ToHex(two), ToHex(expected));
        ASSERT_EQ(ToHex(one), ToHex(expected.substr(8)));

        const std::string first = key.substr(0, 8);
        const std::string second = key.substr(8, 8);
        des2key(Bytes(key), mode);
        D2des(Bytes(text), Bytes(two));
        ASSERT_EQ(ToHex(two), ToHex(Peer(first + second + first, text, mode == 0)));

        // The first pass alone: the others undo each other.
        std::string keys = first + second + second;
        des3key(Bytes(keys), 0);
        deskey(Bytes(key), mode);
        Ddes(Bytes(text), Bytes(one));
        ASSERT_EQ(ToHex(one), ToHex(Peer(first + first + first, text.substr(0, 8), mode == 0)));
    }
}

TEST(EncryptionBesideOpenSsl, AgreesForTextsOfAllLengths) {
    const std::string key(reinterpret_cast<const char*>(bss::WEncryption::m_Key), 24);
    std::mt19937 generator(1999);
    for (std::size_t size = 0; size <= 200; ++size) {
        const std::string text = RandomBytes(generator, size);
        std::string padded = text;
        padded.resize((size + 7) / 8 * 8, '\0');
        ASSERT_EQ(ToHex(bss::WEncryption::Encrypt(text)), ToHex(Peer(key, padded, true)));
        ASSERT_EQ(ToHex(bss::WEncryption::Decrypt(text)), ToHex(Peer(key, padded, false)));
    }
}

TEST(Base64BesideOpenSsl, AgreesForTextsOfAllLengths) {
    std::mt19937 generator(4648);
    for (int size = 1; size < 400; ++size) {
        std::string bytes = RandomBytes(generator, static_cast<std::size_t>(size));
        std::string expected(600, '\0');
        expected.resize(static_cast<std::size_t>(EVP_EncodeBlock(Bytes(expected), Bytes(bytes), size)));
        int length = 600;
        std::string text(600, '\0');
        ASSERT_TRUE(bss::base64::Encode(Bytes(bytes), size, text.data(), &length, bss::base64::NoLineBreaks));
        ASSERT_EQ(text.substr(0, static_cast<std::size_t>(length)), expected);
    }
}

} // namespace

#endif
