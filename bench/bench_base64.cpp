// Measures base64 encoding and decoding, with and without line breaks, against OpenSSL and Boost.
//
// OpenSSL's block calls write no line breaks; its streaming calls break lines at 64 characters. The program
// first compares all results and fails if they differ.
//
//     bench_base64 [--benchmark_... options]

#include "bss/system/base64.h"

#include <benchmark/benchmark.h>
#include <boost/archive/iterators/base64_from_binary.hpp>
#include <boost/archive/iterators/transform_width.hpp>
#include <openssl/evp.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

namespace base64 = bss::base64;
using Bytes = std::vector<unsigned char>;

Bytes MakeBytes(int length) {
    std::minstd_rand random(1);
    Bytes bytes(static_cast<std::size_t>(length));
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<unsigned char>(random() >> 8); });
    return bytes;
}

int EncodeOurs(const Bytes& bytes, std::string& text, unsigned long flags) {
    int length = static_cast<int>(text.size());
    base64::Encode(bytes.data(), static_cast<int>(bytes.size()), text.data(), &length, flags);
    return length;
}

int EncodeOpenSslBlock(const Bytes& bytes, std::string& text) {
    return EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), bytes.data(),
                           static_cast<int>(bytes.size()));
}

int EncodeOpenSslLines(const Bytes& bytes, std::string& text) {
    EVP_ENCODE_CTX* const context = EVP_ENCODE_CTX_new();
    auto* const target = reinterpret_cast<unsigned char*>(text.data());
    int length = 0;
    int last = 0;
    EVP_EncodeInit(context);
    EVP_EncodeUpdate(context, target, &length, bytes.data(), static_cast<int>(bytes.size()));
    EVP_EncodeFinal(context, target + length, &last);
    EVP_ENCODE_CTX_free(context);
    return length + last;
}

int EncodeBoost(const Bytes& bytes, std::string& text) {
    using namespace boost::archive::iterators;
    using Iterator = base64_from_binary<transform_width<Bytes::const_iterator, 6, 8>>;
    return static_cast<int>(std::copy(Iterator(bytes.begin()), Iterator(bytes.end()), text.begin()) -
                            text.begin());
}

int DecodeOurs(const std::string& text, Bytes& bytes) {
    int length = static_cast<int>(bytes.size());
    base64::Decode(text.data(), static_cast<int>(text.size()), bytes.data(), &length);
    return length;
}

int DecodeOpenSslBlock(const std::string& text, Bytes& bytes) {
    return EVP_DecodeBlock(bytes.data(), reinterpret_cast<const unsigned char*>(text.data()),
                           static_cast<int>(text.size()));
}

int DecodeOpenSslLines(const std::string& text, Bytes& bytes) {
    EVP_ENCODE_CTX* const context = EVP_ENCODE_CTX_new();
    int length = 0;
    int last = 0;
    EVP_DecodeInit(context);
    EVP_DecodeUpdate(context, bytes.data(), &length, reinterpret_cast<const unsigned char*>(text.data()),
                     static_cast<int>(text.size()));
    EVP_DecodeFinal(context, bytes.data() + length, &last);
    EVP_ENCODE_CTX_free(context);
    return length + last;
}

void Register(const std::string& name, std::function<int()> run) {
    benchmark::RegisterBenchmark(name.c_str(), [run = std::move(run)](benchmark::State& state) {
        for (auto step : state) {
            static_cast<void>(step);
            benchmark::DoNotOptimize(run());
            benchmark::ClobberMemory();
        }
    })->Repetitions(9);
}

bool RegisterAll(int length) {
    const Bytes bytes = MakeBytes(length);
    const std::string topic = "base64/";
    const std::string what =
        length >= 1024 ? std::to_string(length / 1024) + " KiB" : std::to_string(length) + " bytes";
    std::string text(static_cast<std::size_t>(2 * length + 100), '\0');
    std::string plain = text;
    plain.resize(static_cast<std::size_t>(EncodeOurs(bytes, plain, base64::NoLineBreaks)));
    std::string lines = text;
    lines.resize(static_cast<std::size_t>(EncodeOurs(bytes, lines, 0)));
    std::string theirs = text;
    theirs.resize(static_cast<std::size_t>(EncodeOpenSslBlock(bytes, theirs)));
    Bytes room(static_cast<std::size_t>(length) + 100);
    if (theirs != plain || DecodeOurs(plain, room) != length ||
        !std::equal(bytes.begin(), bytes.end(), room.begin()) || DecodeOurs(lines, room) != length ||
        DecodeOpenSslLines(lines, room) != length) {
        std::fprintf(stderr, "bench_base64: the encoders do not agree\n");
        return false;
    }
    const std::string encode = topic + "encode " + what + "/";
    Register(encode + "krtbss", [=]() mutable { return EncodeOurs(bytes, text, base64::NoLineBreaks); });
    Register(encode + "OpenSSL", [=]() mutable { return EncodeOpenSslBlock(bytes, text); });
    Register(encode + "Boost", [=]() mutable { return EncodeBoost(bytes, text); });
    const std::string encodeLines = topic + "encode " + what + " in lines/";
    Register(encodeLines + "krtbss", [=]() mutable { return EncodeOurs(bytes, text, 0); });
    Register(encodeLines + "OpenSSL", [=]() mutable { return EncodeOpenSslLines(bytes, text); });
    const std::string decode = topic + "decode " + what + "/";
    Register(decode + "krtbss", [=]() mutable { return DecodeOurs(plain, room); });
    Register(decode + "OpenSSL", [=]() mutable { return DecodeOpenSslBlock(plain, room); });
    const std::string decodeLines = topic + "decode " + what + " in lines/";
    Register(decodeLines + "krtbss", [=]() mutable { return DecodeOurs(lines, room); });
    Register(decodeLines + "OpenSSL", [=]() mutable { return DecodeOpenSslLines(lines, room); });
    return true;
}

} // namespace

int main(int argc, char** argv) {
    for (const int length : {48, 65'520}) {
        if (!RegisterAll(length)) {
            return 1;
        }
    }
    std::string minimum = "--benchmark_min_time=0.05";
    std::vector<char*> arguments(argv, argv + argc);
    arguments.insert(arguments.begin() + 1, minimum.data());
    auto count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
