// WEncryption: scrambles short strings, such as stored passwords, with one built-in key.
//
//     const std::string stored = bss::WEncryption::Encrypt("secret");     // 8 bytes of any value
//     const std::string text = bss::WEncryption::Decrypt(stored).c_str(); // without the padding
//
// The cipher is Triple DES in blocks of 8 bytes, each by itself (ECB). It keeps text from a glance, not from
// anybody who has this library: the key is in it, and equal blocks of text give equal blocks of the result.
//
// Wide text is encrypted as UTF-16 code units, the low byte of each first, so that results of all systems are
// the same. A result holds one code unit a character, of any 16-bit value, also where wchar_t has 32 bits:
// store it as numbers, not as text. Text outside the basic plane goes in as its two units. It comes out as
// two there too; this joins them:
//
//     krtpal::WideFromUtf16(krtpal::Utf16FromWide(text))
//
// Threads: all operations may be used from any thread.

#ifndef BSS_SYSTEM_WENCRYPTION_H
#define BSS_SYSTEM_WENCRYPTION_H

#include "bss/Export.h"

#include <string>

namespace bss {

class KRTBSS_API WEncryption {
public:
    WEncryption() = default;
    WEncryption(const WEncryption&) = default;
    WEncryption(WEncryption&&) = default;
    WEncryption& operator=(const WEncryption&) = default;
    WEncryption& operator=(WEncryption&&) = default;
    ~WEncryption() = default;

    /// The length is rounded up to a multiple of 8 bytes or 4 code units, with zeros behind the text. An
    /// empty text gives an empty result.
    static std::string Encrypt(const std::string& text);
    static std::wstring Encrypt(const std::wstring& text);

    /// The text with the zeros behind it; c_str() cuts them off. All input is accepted: what Encrypt did not
    /// make becomes noise, and a last block that is not whole is filled up with zeros.
    static std::string Decrypt(const std::string& text);
    static std::wstring Decrypt(const std::wstring& text);

    std::string EncryptNarrowString(const std::string& text) const;
    std::wstring EncryptWideString(const std::wstring& text) const;
    std::string DecryptNarrowString(const std::string& text) const;
    std::wstring DecryptWideString(const std::wstring& text) const;

    /// The three DES keys, 24 bytes. Whoever changes it sees to it that nothing is encrypted meanwhile.
    static unsigned char* m_Key;
};

} // namespace bss

#endif
