// Measures DES against OpenSSL, CRC-32 against Boost, and the library's use of zlib against direct calls of
// zlib.
//
// The library has no CRC of its own: its checksums call zlib's, which is measured here. The peer for files is
// a hand-written loop of stdio and zlib's gzip files with buffers of 64 KiB. The program first compares the
// bytes of all results and fails if they differ.
//
//     bench_codec [--benchmark_... options]

#define OPENSSL_SUPPRESS_DEPRECATED
#include "bss/system/WCompression.h"
#include "bss/system/WEncryption.h"
#include "bss/system/des.h"

#include <benchmark/benchmark.h>
#include <boost/crc.hpp>
#include <openssl/des.h>
#include <openssl/evp.h>
#include <zlib.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Block = std::vector<unsigned char>;

template <class Operation>
void Register(const std::string& name, std::size_t bytes, Operation operation) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [operation, bytes](benchmark::State& state) mutable {
                                     for (auto step : state) {
                                         static_cast<void>(step);
                                         operation();
                                         benchmark::ClobberMemory();
                                     }
                                     state.SetBytesProcessed(
                                         static_cast<std::int64_t>(state.iterations() * bytes));
                                 })
        ->MinTime(0.05)
        ->Repetitions(9);
}

void Check(bool agrees, const char* what) {
    if (!agrees) {
        throw std::runtime_error(std::string(what) + " differs");
    }
}

struct PeerKeys {
    DES_key_schedule schedules[3];

    explicit PeerKeys(unsigned char* key) {
        for (std::size_t i = 0; i < 3; ++i) {
            DES_set_key_unchecked(reinterpret_cast<DES_cblock*>(key + 8 * i), &schedules[i]);
        }
    }
    void Encrypt(const unsigned char* from, unsigned char* into) {
        DES_cblock block;
        std::memcpy(block, from, 8);
        DES_ecb3_encrypt(&block, reinterpret_cast<DES_cblock*>(into), &schedules[0], &schedules[1],
                         &schedules[2], DES_ENCRYPT);
    }
};

// Sets up the key for each text, as WEncryption does.
std::string EncryptByPeer(const std::string& text) {
    PeerKeys keys(bss::WEncryption::m_Key);
    std::string result(text);
    result.resize((text.size() + 7) / 8 * 8, '\0');
    auto* const bytes = reinterpret_cast<unsigned char*>(result.data());
    for (std::size_t i = 0; i < result.size(); i += 8) {
        keys.Encrypt(bytes + i, bytes + i);
    }
    return result;
}

std::string EncryptByEvp(const std::string& text) {
    EVP_CIPHER_CTX* const context = EVP_CIPHER_CTX_new();
    EVP_EncryptInit_ex(context, EVP_des_ede3_ecb(), nullptr, bss::WEncryption::m_Key, nullptr);
    EVP_CIPHER_CTX_set_padding(context, 0);
    std::string result(text.size(), '\0');
    int size = 0;
    EVP_EncryptUpdate(context, reinterpret_cast<unsigned char*>(result.data()), &size,
                      reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    EVP_CIPHER_CTX_free(context);
    return result;
}

// The block that the passes encrypt in place: each result is the next text.
struct Chain {
    unsigned char bytes[16] = {};
};

void RegisterDes() {
    unsigned char* const key = bss::WEncryption::m_Key;
    const auto keys = std::make_shared<PeerKeys>(key);
    const auto chain = std::make_shared<Chain>();
    des3key(key, 0);
    Chain ours;
    Chain peer;
    Ddes(ours.bytes, ours.bytes);
    keys->Encrypt(peer.bytes, peer.bytes);
    Check(std::memcmp(ours.bytes, peer.bytes, sizeof(peer.bytes)) == 0, "DES");

    Register("Triple DES/three keys/krtbss", 24, [key] { des3key(key, 0); });
    Register("Triple DES/three keys/OpenSSL", 24, [key] { benchmark::DoNotOptimize(PeerKeys(key)); });
    Register("Triple DES/a block/krtbss", 8, [chain] { Ddes(chain->bytes, chain->bytes); });
    Register("Triple DES/a block/OpenSSL", 8, [=] { keys->Encrypt(chain->bytes, chain->bytes); });
    Register("Triple DES/two blocks/krtbss", 16, [chain] { D2des(chain->bytes, chain->bytes); });
    Register("Triple DES/two blocks/OpenSSL", 16, [=] {
        keys->Encrypt(chain->bytes, chain->bytes);
        keys->Encrypt(chain->bytes + 8, chain->bytes + 8);
    });
    for (const std::size_t size : {std::size_t{16}, std::size_t{65536}}) {
        const std::string text(size, 'x');
        const std::string expected = bss::WEncryption::Encrypt(text);
        Check(EncryptByPeer(text) == expected && EncryptByEvp(text) == expected, "DES of a text");
        const std::string topic = "Triple DES/" + std::to_string(size) + " bytes with their keys/";
        Register(topic + "krtbss", size,
                 [text] { benchmark::DoNotOptimize(bss::WEncryption::Encrypt(text)); });
        Register(topic + "OpenSSL", size, [text] { benchmark::DoNotOptimize(EncryptByPeer(text)); });
        Register(topic + "OpenSSL EVP", size, [text] { benchmark::DoNotOptimize(EncryptByEvp(text)); });
    }
}

// Returns a table of numbers, like stored measurements, of slightly more than 4 MB.
Block MakeTable() {
    std::mt19937 generator(11);
    std::normal_distribution<double> noise;
    Block table;
    char line[64];
    for (int i = 0; i < 160000; ++i) {
        const int size = std::snprintf(line, sizeof(line), "%d,%.6g,%.4f\n", i, 1e-7 * i, noise(generator));
        table.insert(table.end(), line, line + size);
    }
    return table;
}

void RegisterBlocks(const Block& table) {
    const auto size = static_cast<unsigned long>(table.size());
    boost::crc_32_type first;
    first.process_bytes(table.data(), table.size());
    Check(first.checksum() == crc32(0, table.data(), static_cast<uInt>(size)), "CRC-32");
    Register("CRC-32 (zlib's, as the library calls it)/a table/krtbss", size,
             [&table] { benchmark::DoNotOptimize(crc32(0, table.data(), static_cast<uInt>(table.size()))); });
    Register("CRC-32 (zlib's, as the library calls it)/a table/Boost", size, [&table] {
        boost::crc_32_type crc;
        crc.process_bytes(table.data(), table.size());
        benchmark::DoNotOptimize(crc.checksum());
    });

    const auto room = std::make_shared<Block>(bss::WCompression::CompressBound(size));
    Register("zlib/Compress/krtbss", size, [&table, room] {
        auto length = static_cast<unsigned long>(room->size());
        bss::WCompression::Compress(room->data(), &length, table.data(), table.size());
    });
    Register("zlib/Compress/zlib", size, [&table, room] {
        uLongf length = room->size();
        compress2(room->data(), &length, table.data(), table.size(), Z_NO_COMPRESSION);
    });
    const auto packed = std::make_shared<Block>(room->size());
    auto length = static_cast<unsigned long>(packed->size());
    compress2(packed->data(), &length, table.data(), table.size(), 6);
    packed->resize(length);
    Register("zlib/Uncompress/krtbss", size, [packed, room] {
        auto used = static_cast<unsigned long>(room->size());
        bss::WCompression::Uncompress(room->data(), &used, packed->data(), packed->size());
    });
    Register("zlib/Uncompress/zlib", size, [packed, room] {
        uLongf used = room->size();
        uncompress(room->data(), &used, packed->data(), packed->size());
    });
}

void CompressByPeer(const std::string& source, const std::string& target) {
    std::FILE* const input = std::fopen(source.c_str(), "rb");
    const gzFile output = gzopen(target.c_str(), "wb6");
    std::vector<char> buffer(65536);
    while (const std::size_t size = std::fread(buffer.data(), 1, buffer.size(), input)) {
        gzwrite(output, buffer.data(), static_cast<unsigned>(size));
    }
    std::fclose(input);
    gzclose(output);
}

void UncompressByPeer(const std::string& source, const std::string& target) {
    const gzFile input = gzopen(source.c_str(), "rb");
    std::FILE* const output = std::fopen(target.c_str(), "wb");
    std::vector<char> buffer(65536);
    int size = 0;
    while ((size = gzread(input, buffer.data(), static_cast<unsigned>(buffer.size()))) > 0) {
        std::fwrite(buffer.data(), 1, static_cast<std::size_t>(size), output);
    }
    gzclose(input);
    std::fclose(output);
}

Block Read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void RegisterFiles(const Block& table, const std::filesystem::path& folder) {
    const std::string plain = folder / "table.csv";
    const std::string packed = folder / "table.csv.gz";
    const std::string back = folder / "back.csv";
    std::ofstream(plain, std::ios::binary)
        .write(reinterpret_cast<const char*>(table.data()), static_cast<std::streamsize>(table.size()));
    const auto wide = [](const std::string& path) { return std::wstring(path.begin(), path.end()); };
    bss::WCompression::CompressFile(wide(plain), wide(packed));
    UncompressByPeer(packed, back);
    Check(Read(back) == table, "the library's gzip file");
    CompressByPeer(plain, packed);
    bss::WCompression::UncompressFile(wide(packed), wide(back));
    Check(Read(back) == table, "the peer's gzip file");

    Register("gzip/CompressFile/krtbss", table.size(),
             [=] { bss::WCompression::CompressFile(wide(plain), wide(packed)); });
    Register("gzip/CompressFile/zlib", table.size(), [=] { CompressByPeer(plain, packed); });
    Register("gzip/UncompressFile/krtbss", table.size(),
             [=] { bss::WCompression::UncompressFile(wide(packed), wide(back)); });
    Register("gzip/UncompressFile/zlib", table.size(), [=] { UncompressByPeer(packed, back); });
}

} // namespace

int main(int argc, char** argv) {
    const std::filesystem::path folder = std::filesystem::temp_directory_path() /
                                         ("krtbss_bench_codec_" + std::to_string(std::random_device()()));
    int status = 0;
    try {
        std::filesystem::create_directories(folder);
        const Block table = MakeTable();
        RegisterDes();
        RegisterBlocks(table);
        RegisterFiles(table, folder);
        benchmark::Initialize(&argc, argv);
        if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
            status = 2;
        } else {
            benchmark::RunSpecifiedBenchmarks();
        }
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "bench_codec: %s\n", failure.what());
        status = 1;
    }
    std::filesystem::remove_all(folder);
    return status;
}
