// Version blocks that are cut, or lie about their lengths. fuzz_version has more of them.

#include "support/VersionModules.h"

#include "bss/system/WVersionResource.h"
#include "krtpal/version.h"

#include <gtest/gtest.h>

namespace {

class DamagedVersion : public testing::Test {
protected:
    void SetUp() override {
#ifdef _WIN32
        GTEST_SKIP() << "the reader is the system's own here";
#endif
    }
};

TEST_F(DamagedVersion, FilesThatEndBeforeItHaveNone) {
    std::vector<std::filesystem::path> files = PeFiles("version_full");
    files.push_back(ModuleFilePath("version_full"));
    for (const std::filesystem::path& file : files) {
        const std::string bytes = ReadBytes(file);
        const std::size_t block = FindBlock(bytes);
        // The headers byte by byte, the rest in strides.
        for (std::size_t size = 0; size <= block; size += size < 0x400 ? 1 : 61) {
            const TemporaryFile cut(bytes.substr(0, size));
            EXPECT_EQ(GetFileVersionInfoSizeW(cut.Path().wstring().c_str(), nullptr), 0U) << size;
        }
    }
}

/// The class trusts nobody with lengths either.
TEST_F(DamagedVersion, ModulesWithLyingBlocksLoadAndRead) {
    const std::string bytes = ReadBytes(ModuleFilePath("version_full"));
    const std::size_t block = FindBlock(bytes);
    int intact = 0;
    for (std::size_t at = block; at < block + 0x400; at += 2) {
        std::string damaged = bytes;
        damaged[at] = damaged[at + 1] = '\xFF';
        const TemporaryFile file(damaged);
        const LoadedModule module(file.Path());
        const bss::WVersionResource resource(module.Handle());
        intact += std::wstring(resource.GetProductVersion()) == L"X 1.2.3.4 (Y)" ? 1 : 0;
    }
    EXPECT_GT(intact, 0);
    EXPECT_LT(intact, 0x200);
}

} // namespace
