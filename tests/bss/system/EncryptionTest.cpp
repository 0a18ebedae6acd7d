#include "bss/system/WEncryption.h"

#include "bss/system/des.h"
#include "krtpal/common/text.h"
#include "support/Hex.h"
#include "support/Threads.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <utility>

using bss::WEncryption;

namespace {

/// The characters as code units, low byte first.
std::string UnitsToHex(const std::wstring& text) {
    std::string bytes;
    for (const wchar_t c : text) {
        EXPECT_LE(static_cast<unsigned long>(c), 0xFFFFUL);
        bytes += static_cast<char>(c & 0xFF);
        bytes += static_cast<char>(c >> 8 & 0xFF);
    }
    return ToHex(bytes);
}

TEST(Encryption, GivesTheSameBytesOnAllSystems) {
    EXPECT_EQ(std::memcmp(WEncryption::m_Key, "MaDeUpTrIpLeDeSkEy352+=~", 24), 0);
    const WEncryption members;
    const std::pair<std::string, const char*> narrow[] = {
        {"", ""},
        {"secret", "FA472591AD508949"},
        {"12345678", "1E083A03BA738B97"},
        {"123456789", "1E083A03BA738B97FB4214F5C4C1B59E"},
        {"p\xC3\xA4ss", "AFD9FCA66C7718D5"},
    };
    for (const auto& [text, result] : narrow) {
        EXPECT_EQ(ToHex(WEncryption::Encrypt(text)), result);
        EXPECT_EQ(ToHex(members.EncryptNarrowString(text)), result);
        std::string padded = text;
        padded.resize(std::strlen(result) / 2, '\0');
        EXPECT_EQ(WEncryption::Decrypt(FromHex(result)), padded);
        EXPECT_EQ(members.DecryptNarrowString(FromHex(result)), padded);
    }
    const std::pair<std::wstring, const char*> wide[] = {
        {L"", ""},
        {L"secret", "6DA3F83B2027591D9D56E45544436423"},
        {L"abc\u00B5", "EEFF7704A37905AF"},
        {L"key \U0001F511!", "15C16B939285299BAC157243330FDC03"},
        {std::wstring(L"\0\xFFFF\xD800x", 4), "6E42A2490D71D2A8"},
    };
    for (const auto& [text, result] : wide) {
        const std::wstring encrypted = WEncryption::Encrypt(text);
        EXPECT_EQ(UnitsToHex(encrypted), result);
        EXPECT_EQ(members.EncryptWideString(text), encrypted);
        // Back as code units; joined they are the text and its padding.
        const std::wstring units = WEncryption::Decrypt(encrypted);
        EXPECT_EQ(units, members.DecryptWideString(encrypted));
        std::wstring padded = text;
        padded.resize(text.size() + encrypted.size() - krtpal::Utf16Length(text), L'\0');
        EXPECT_EQ(std::wstring(krtpal::WideFromUtf16(krtpal::Utf16View(krtpal::EncodeUtf16(units)))), padded);
    }
}

/// Another key for a scope
struct KeyScope {
    explicit KeyScope(std::string& key) { WEncryption::m_Key = Bytes(key); }
    ~KeyScope() { WEncryption::m_Key = m_before; }
    unsigned char* const m_before = WEncryption::m_Key;
};

TEST(Encryption, AnotherKeyIsInForceAtOnce) {
    const std::string text = "The qufck brown fox jump";
    const std::string builtIn(reinterpret_cast<const char*>(WEncryption::m_Key), 24);
    const std::string expected = WEncryption::Encrypt(text);
    std::string key =
        FromHex("0123456789ABCDEF23456789ABCDEF01456789ABCDEF0123"); // NIST SP 800-67, appendix B
    const KeyScope scope(key);
    EXPECT_EQ(ToHex(WEncryption::Encrypt(text)), "A826FD8CE53B855FCCE21C8112256FE668D5C05DD9B6B900");
    EXPECT_EQ(WEncryption::Decrypt(WEncryption::Encrypt(text)), text);
    key = builtIn;
    WEncryption::m_Key = Bytes(key);
    EXPECT_EQ(ToHex(WEncryption::Encrypt(text)), ToHex(expected));
    key.back() ^= 2; // not the parity bit
    EXPECT_NE(ToHex(WEncryption::Encrypt(text)), ToHex(expected));
}

// On the heap and without spare room, so that a sanitizer sees a read behind the end.
TEST(Encryption, FillsUpABlockThatIsNotWholeWithZeros) {
    for (std::size_t size = 1; size <= 40; ++size) {
        const std::wstring wide(size, L'\xD85A');
        EXPECT_EQ(WEncryption::Decrypt(wide),
                  WEncryption::Decrypt(wide + std::wstring((4 - size % 4) % 4, L'\0')));
    }
}

TEST(Encryption, ServesManyThreadsAndLeavesTheSchedulesOfTheProcess) {
    std::string key = "24 bytes make three keys";
    des3key(Bytes(key), 0);
    unsigned long before[96];
    cp3key(before);
    RunInThreads(8, [](int number) {
        const std::string text(static_cast<std::size_t>(8 * (number + 1)), 't');
        const std::string expected = WEncryption::Encrypt(text);
        for (int i = 0; i < 500; ++i) {
            ASSERT_EQ(WEncryption::Encrypt(text), expected);
            ASSERT_EQ(WEncryption::Decrypt(expected), text);
        }
    });
    unsigned long after[96];
    cp3key(after);
    EXPECT_EQ(std::memcmp(before, after, sizeof(after)), 0);
}

} // namespace
