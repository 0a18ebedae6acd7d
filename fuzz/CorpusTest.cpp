// Runs a fuzzer's entry over its corpus, over the beginnings of each file, and over changes of them that are
// the same in every run; over ten times as many where KRTBSS_TEST_LONG is set. What is wrong ends the
// program, or is found by the sanitizers.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;

void RunEntry(const Bytes& bytes) {
    // Of just that size, so that a step over the end is seen.
    const Bytes exact(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

Bytes Change(Bytes bytes, std::minstd_rand& random) {
    const auto below = [&random](std::size_t end) { return static_cast<std::size_t>(random() >> 4U) % end; };
    for (std::size_t changes = 1 + below(4); changes != 0 && !bytes.empty(); --changes) {
        const std::size_t at = below(bytes.size());
        const auto place = bytes.begin() + static_cast<std::ptrdiff_t>(at);
        const std::size_t length = 1 + below(std::min<std::size_t>(8, bytes.size() - at));
        switch (below(5)) {
        case 0:
            *place = static_cast<std::uint8_t>(*place ^ (1U << below(8)));
            break;
        case 1:
            *place = static_cast<std::uint8_t>(below(256));
            break;
        case 2: // a count of extremes
            std::fill_n(place, length, static_cast<std::uint8_t>(below(2) == 0 ? 0xFF : 0));
            break;
        case 3:
            bytes.erase(place, place + static_cast<std::ptrdiff_t>(length));
            break;
        default:
            const Bytes piece(place, place + static_cast<std::ptrdiff_t>(length));
            bytes.insert(place, piece.begin(), piece.end());
        }
    }
    return bytes;
}

TEST(Corpus, AndItsChangesAreSurvived) {
    const bool isLong = std::getenv("KRTBSS_TEST_LONG") != nullptr;
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(CORPUS)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const Bytes bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        ASSERT_FALSE(bytes.empty()) << entry.path();
        ++files;
        for (std::size_t size = 0; size <= bytes.size(); size += isLong ? 1 : 3) {
            RunEntry(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)));
        }
        std::minstd_rand random(1);
        for (int i = 0; i < (isLong ? 3000 : 300); ++i) {
            RunEntry(Change(bytes, random));
        }
    }
    EXPECT_GT(files, 0) << "no corpus in " << CORPUS;
}

} // namespace
