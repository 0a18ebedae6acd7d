#include "bss/system/des.h"

#include "bss/system/private/DesCipher.h"

#include <algorithm>
#include <cstddef>

using bss::des::kBlockSize;
using bss::des::Mode;
using bss::des::Schedule;
using bss::des::TripleSchedule;

namespace {

TripleSchedule processKeys{};

Mode ModeOf(short mode) {
    return mode == 1 ? Mode::Decrypt : Mode::Encrypt;
}

unsigned long* Save(const Schedule& keys, unsigned long* into) {
    return std::copy(keys.begin(), keys.end(), into);
}

const unsigned long* Restore(const unsigned long* from, Schedule& keys) {
    for (std::uint32_t& word : keys) {
        word = static_cast<std::uint32_t>(*from++);
    }
    return from;
}

constexpr unsigned char kDefaultKey[24] = {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF,
                                           0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10,
                                           0x89, 0xAB, 0xCD, 0xEF, 0x01, 0x23, 0x45, 0x67};

// Uses schedules of its own, so that those of the process are unchanged.
template <class Encrypt>
void MakeKey(char* text, unsigned char* key, std::size_t length, Encrypt encrypt) {
    std::copy_n(kDefaultKey, length, key);
    do {
        for (std::size_t i = 0; i < length && *text != '\0'; ++i) {
            key[i] ^= static_cast<unsigned char>(*text & 0x7F);
            *text++ = '\0';
        }
        encrypt();
    } while (*text != '\0');
}

} // namespace

void deskey(unsigned char key[8], short mode) {
    processKeys[0] = bss::des::OneKeySchedule(key, ModeOf(mode));
}

void des2key(unsigned char key[16], short mode) {
    processKeys = bss::des::TwoKeySchedule(key, ModeOf(mode));
}

void des3key(unsigned char key[24], short mode) {
    processKeys = bss::des::ThreeKeySchedule(key, ModeOf(mode));
}

void cpkey(unsigned long into[32]) {
    Save(processKeys[0], into);
}

void usekey(unsigned long from[32]) {
    Restore(from, processKeys[0]);
}

void cp3key(unsigned long into[96]) {
    for (const Schedule& keys : processKeys) {
        into = Save(keys, into);
    }
}

void use3key(unsigned long from[96]) {
    const unsigned long* words = from;
    for (Schedule& keys : processKeys) {
        words = Restore(words, keys);
    }
}

void Ddes(unsigned char from[8], unsigned char into[8]) {
    bss::des::CryptBlocks<1>(processKeys, from, into);
}

void D2des(unsigned char from[16], unsigned char into[16]) {
    bss::des::CryptBlocks<2>(processKeys, from, into);
}

void makekey(char* text, unsigned char key[8]) {
    const Schedule keys = bss::des::OneKeySchedule(kDefaultKey, Mode::Encrypt);
    MakeKey(text, key, kBlockSize, [&] { bss::des::CryptOnce(keys, key, key); });
}

void make2key(char* text, unsigned char key[16]) {
    const TripleSchedule keys = bss::des::TwoKeySchedule(kDefaultKey, Mode::Encrypt);
    MakeKey(text, key, 2 * kBlockSize, [&] { bss::des::CryptBlocks<2>(keys, key, key); });
}

void make3key(char* text, unsigned char key[24]) {
    const TripleSchedule keys = bss::des::ThreeKeySchedule(kDefaultKey, Mode::Encrypt);
    MakeKey(text, key, 3 * kBlockSize, [&] {
        bss::des::CryptBlocks<2>(keys, key, key);
        bss::des::CryptBlocks<1>(keys, key + 2 * kBlockSize, key + 2 * kBlockSize);
    });
}
