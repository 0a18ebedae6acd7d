// Version blocks that are cut, or lie about their lengths, must not be read beyond their end. What can be
// read of them is not told; that nothing else is touched, the address sanitizer tells.

#include "support/VersionModules.h"

#include "bss/system/WVersionResource.h"
#include "krtpal/version.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

/// Asks a file for all that a reader could want. How many values were found.
int QueryAll(const std::filesystem::path& path) {
    const std::wstring wide = path.wstring();
    const DWORD size = GetFileVersionInfoSizeW(wide.c_str(), nullptr);
    std::vector<unsigned char> block(size);
    if (size == 0 || !GetFileVersionInfoW(wide.c_str(), 0, size, block.data())) {
        return 0;
    }
    int found = 0;
    const struct {
        const wchar_t* name;
        std::size_t unit; ///< of the length, in bytes
    } queries[] = {{L"\\", 1},
                   {L"\\VarFileInfo\\Translation", 1},
                   {L"\\StringFileInfo", 1},
                   {L"\\StringFileInfo\\040704e4", 1},
                   {L"\\StringFileInfo\\040704e4\\ProductName", sizeof(wchar_t)},
                   {L"\\StringFileInfo\\040704e4\\KRTIOVer", sizeof(wchar_t)},
                   {L"\\StringFileInfo\\040c04b0\\ProductVersion", sizeof(wchar_t)}};
    for (const auto& query : queries) {
        void* value = nullptr;
        UINT length = 0;
        if (VerQueryValueW(block.data(), query.name, &value, &length)) {
            ++found;
            const auto at = static_cast<std::size_t>(static_cast<unsigned char*>(value) - block.data());
            EXPECT_LE(at + length * query.unit, block.size()) << query.name;
        }
    }
    return found;
}

/// The files that were made, some only where a resource compiler was there.
std::vector<std::string> BytesToDamage() {
    std::vector<std::string> all{ReadBytes(ModuleFilePath("version_full"))};
#ifdef PE_FOLDER
    for (const char* const triple : {"x86_64-w64-mingw32", "i686-w64-mingw32"}) {
        const auto file = std::filesystem::path(PE_FOLDER) / triple / "version_full.dll";
        if (std::filesystem::exists(file)) {
            all.push_back(ReadBytes(file));
        }
    }
#endif
    return all;
}

class DamagedVersion : public testing::Test {
protected:
    void SetUp() override {
#ifdef _WIN32
        GTEST_SKIP() << "the reader is the system's own here";
#endif
    }
};

TEST_F(DamagedVersion, CutFilesGiveLess) {
    for (const std::string& bytes : BytesToDamage()) {
        const std::size_t block = FindBlock(bytes);
        EXPECT_EQ(QueryAll(TemporaryFile(bytes).Path()), 7);
        // The headers byte by byte, the rest in strides.
        for (std::size_t size = 0; size < bytes.size(); size += size < 0x400 ? 1 : 61) {
            const int found = QueryAll(TemporaryFile(bytes.substr(0, size)).Path());
            EXPECT_TRUE(found == 0 || size > block) << size;
        }
    }
}

TEST_F(DamagedVersion, LengthsAndOffsetsThatLieDoNoHarm) {
    // All of the headers, and the block with what leads to it.
    constexpr std::size_t headers = 0x400;
    const std::size_t step = std::getenv("KRTBSS_TEST_LONG") ? 2 : 6;
    for (const std::string& bytes : BytesToDamage()) {
        const std::size_t block = FindBlock(bytes);
        for (std::size_t at = 0; at + 2 <= std::min(bytes.size(), block + 0x600); at += step) {
            if (at >= headers && at + 0x100 < block) {
                continue;
            }
            for (const char* const lie : {"\0\0", "\5\0", "\xFF\x7F", "\xFF\xFF"}) {
                std::string damaged = bytes;
                std::memcpy(&damaged[at], lie, 2);
                EXPECT_GE(QueryAll(TemporaryFile(damaged).Path()), 0);
            }
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
