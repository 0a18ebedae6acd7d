// WEncryption: obfuscates short strings, such as stored passwords, with one built-in key.
//
//     const std::string stored = bss::WEncryption::Encrypt("secret");     // 8 bytes of any value
//     const std::string text = bss::WEncryption::Decrypt(stored).c_str(); // without the padding
//
// The cipher is Triple DES (FIPS 46-3) in ECB mode. It hides text from a casual reader only: the key is in
// this library, and equal blocks of text give equal blocks of the result.
//
// Wide text is encrypted as UTF-16 code units, low byte first, so that the results of all systems are the
// same. A result has one code unit of any 16-bit value in each character, also on systems whose wchar_t has
// 32 bits: store it as numbers, not as text. A character beyond U+FFFF is encrypted as its surrogate pair and
// decrypted to one there too. This joins the pairs:
//
//     krtpal::WideFromUtf16(krtpal::Utf16FromWide(text))
//
// Threads: all operations may be used from any thread, while no thread changes m_Key.

#ifndef BSS_SYSTEM_WENCRYPTION_H
#define BSS_SYSTEM_WENCRYPTION_H

#include "bss/Export.h"

#include <string>

namespace bss {

/// Encrypts and decrypts strings. Objects have no state; the static operations need none.
class KRTBSS_API WEncryption {
public:
    WEncryption() = default;
    WEncryption(const WEncryption&) = default;
    WEncryption(WEncryption&&) = default;
    WEncryption& operator=(const WEncryption&) = default;
    WEncryption& operator=(WEncryption&&) = default;
    ~WEncryption() = default;

    /// Returns the encrypted bytes. The text is padded with zeros to a multiple of 8 bytes. An empty text
    /// gives an empty result.
    static std::string Encrypt(const std::string& text);
    /// Returns the encrypted code units. The text is padded with zeros to a multiple of 4 code units. An
    /// empty text gives an empty result.
    static std::wstring Encrypt(const std::wstring& text);

    /// Returns the text with its padding of zeros; c_str() cuts the padding off. All input is accepted: input
    /// that Encrypt did not make gives noise, and an incomplete last block is padded with zeros.
    static std::string Decrypt(const std::string& text);
    /// See Decrypt(const std::string&).
    static std::wstring Decrypt(const std::wstring& text);

    /// See Encrypt(const std::string&).
    std::string EncryptNarrowString(const std::string& text) const;
    /// See Encrypt(const std::wstring&).
    std::wstring EncryptWideString(const std::wstring& text) const;
    /// See Decrypt(const std::string&).
    std::string DecryptNarrowString(const std::string& text) const;
    /// See Decrypt(const std::wstring&).
    std::wstring DecryptWideString(const std::wstring& text) const;

    /// The three DES keys, 24 bytes. Points to the built-in key in static storage.
    /// REQUIRES: no operation runs while a program changes the pointer or the bytes.
    static unsigned char* m_Key;
};

} // namespace bss

#endif
