// Packs bytes to text and back: compression, encryption, base64, and an identifier for the whole.

#include "bss/exception/WNestedException.h"
#include "bss/system/WCompression.h"
#include "bss/system/WEncryption.h"
#include "bss/system/WGuid.h"
#include "bss/system/base64.h"

#include <cstdio>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

Bytes Compressed(const std::string& text) {
    const Bytes source(text.begin(), text.end());
    unsigned long length = bss::WCompression::CompressBound(static_cast<unsigned long>(source.size()));
    Bytes packed(length);
    bss::WCompression::Compress(packed.data(), &length, source.data(),
                                static_cast<unsigned long>(source.size()));
    packed.resize(length);
    return packed;
}

std::string Uncompressed(const Bytes& packed, std::size_t room) {
    Bytes text(room);
    auto length = static_cast<unsigned long>(room);
    bss::WCompression::Uncompress(text.data(), &length, packed.data(),
                                  static_cast<unsigned long>(packed.size()));
    return {text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length)};
}

std::string Base64(const std::string& bytes) {
    const auto size = static_cast<int>(bytes.size());
    int length = bss::base64::EncodeGetRequiredLength(size, bss::base64::NoLineBreaks);
    std::string text(static_cast<std::size_t>(length), '\0');
    bss::base64::Encode(reinterpret_cast<const unsigned char*>(bytes.data()), size, text.data(), &length,
                        bss::base64::NoLineBreaks);
    return text.substr(0, static_cast<std::size_t>(length));
}

} // namespace

int main() {
    const std::string text(300, 'a');
    Bytes packed = Compressed(text);
    std::printf("compressed and back: %s\n", Uncompressed(packed, 300) == text ? "the same" : "changed");
    packed[100] ^= 1U;
    try {
        Uncompressed(packed, 300);
    } catch (const bss::WNestedException& failure) {
        std::printf("damaged: %ls", failure.AsString(true).c_str());
    }

    // From a glance only: the key is in the library.
    const std::string secret = bss::WEncryption::Encrypt(std::string("secret"));
    std::printf("encrypted: %s\n", Base64(secret).c_str());
    std::printf("decrypted: %s\n", bss::WEncryption::Decrypt(secret).c_str());

    const bss::WGuid guid(L"{0f5b3e1c-9d62-4e0b-a1b2-0c7b1b6c1e11}");
    std::printf("guid: %ls\n", guid.GetAsText().c_str());
    std::printf("a fresh one is another one: %s\n", bss::WGuid(bss::WGuid::GetNext()) != guid ? "yes" : "no");
}
