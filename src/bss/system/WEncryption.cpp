#include "bss/system/WEncryption.h"

#include "bss/system/private/DesCipher.h"
#include "krtpal/common/text.h"

#include <cstddef>
#include <cstring>

namespace bss {

namespace {

using des::kBlockSize;
using des::Mode;

constexpr unsigned char kBuiltInKey[] = "MaDeUpTrIpLeDeSkEy352+=~";
unsigned char keyBytes[] = "MaDeUpTrIpLeDeSkEy352+=~";
static_assert(sizeof(keyBytes) == 24 + 1 && sizeof(kBuiltInKey) == sizeof(keyBytes));

// Caches the key schedules of the built-in key: making one takes as long as encrypting a block.
des::TripleSchedule KeysFor(Mode mode) {
    static const des::TripleSchedule encrypt = des::ThreeKeySchedule(kBuiltInKey, Mode::Encrypt);
    static const des::TripleSchedule decrypt = des::ThreeKeySchedule(kBuiltInKey, Mode::Decrypt);
    if (std::memcmp(WEncryption::m_Key, kBuiltInKey, 24) == 0) {
        return mode == Mode::Encrypt ? encrypt : decrypt;
    }
    return des::ThreeKeySchedule(WEncryption::m_Key, mode);
}

// Encrypts or decrypts `bytes` in place, padded with zeros to whole blocks.
void CryptInPlace(std::string& bytes, Mode mode) {
    const des::TripleSchedule keys = KeysFor(mode);
    bytes.resize((bytes.size() + kBlockSize - 1) / kBlockSize * kBlockSize, '\0');
    auto* block = reinterpret_cast<unsigned char*>(bytes.data());
    std::size_t blocks = bytes.size() / kBlockSize;
    for (; blocks >= 4; blocks -= 4, block += 4 * kBlockSize) {
        des::CryptBlocks<4>(keys, block, block);
    }
    if (blocks >= 2) {
        des::CryptBlocks<2>(keys, block, block);
        blocks -= 2;
        block += 2 * kBlockSize;
    }
    if (blocks != 0) {
        des::CryptBlocks<1>(keys, block, block);
    }
}

std::string Crypt(const std::string& text, Mode mode) {
    if (text.empty()) {
        return {};
    }
    std::string bytes(text);
    CryptInPlace(bytes, mode);
    return bytes;
}

std::wstring Crypt(const std::wstring& text, Mode mode) {
    if (text.empty()) {
        return {};
    }
    const auto units = krtpal::Utf16FromWide(text);
    std::string bytes;
    bytes.reserve(units.size() * 2 + kBlockSize);
    for (const krtpal::Utf16Unit unit : units) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8 & 0xFF);
    }
    CryptInPlace(bytes, mode);
    std::wstring result(bytes.size() / 2, L'\0');
    for (std::size_t i = 0; i < result.size(); ++i) {
        const auto low = static_cast<unsigned char>(bytes[2 * i]);
        const auto high = static_cast<unsigned char>(bytes[2 * i + 1]);
        result[i] = static_cast<wchar_t>(high << 8 | low);
    }
    return result;
}

} // namespace

unsigned char* WEncryption::m_Key = keyBytes;

std::string WEncryption::Encrypt(const std::string& text) {
    return Crypt(text, Mode::Encrypt);
}

std::wstring WEncryption::Encrypt(const std::wstring& text) {
    return Crypt(text, Mode::Encrypt);
}

std::string WEncryption::Decrypt(const std::string& text) {
    return Crypt(text, Mode::Decrypt);
}

std::wstring WEncryption::Decrypt(const std::wstring& text) {
    return Crypt(text, Mode::Decrypt);
}

std::string WEncryption::EncryptNarrowString(const std::string& text) const {
    return Encrypt(text);
}

std::wstring WEncryption::EncryptWideString(const std::wstring& text) const {
    return Encrypt(text);
}

std::string WEncryption::DecryptNarrowString(const std::string& text) const {
    return Decrypt(text);
}

std::wstring WEncryption::DecryptWideString(const std::wstring& text) const {
    return Decrypt(text);
}

} // namespace bss
