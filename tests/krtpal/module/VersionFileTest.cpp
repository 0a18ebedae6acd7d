#include "support/VersionModules.h"

#include "krtpal/error.h"
#include "krtpal/version.h"
#include "support/Expect.h"

#include <vector>

namespace {

std::vector<unsigned char> BlockOf(const std::filesystem::path& path) {
    DWORD handle = 7;
    std::vector<unsigned char> block(GetFileVersionInfoSizeW(path.wstring().c_str(), &handle));
    if (!block.empty() &&
        !GetFileVersionInfoW(path.wstring().c_str(), 0, static_cast<DWORD>(block.size()), block.data())) {
        ADD_FAILURE() << "can't read the block of " << path;
    }
    EXPECT_EQ(handle, 0U);
    return block;
}

std::wstring TextOf(const std::vector<unsigned char>& block, const wchar_t* name) {
    void* value = nullptr;
    UINT length = 0;
    if (!VerQueryValueW(block.data(), name, &value, &length)) {
        return L"(none)";
    }
    return {static_cast<const wchar_t*>(value), length};
}

TEST(VersionFile, AnswersByKey) {
    const std::vector<unsigned char> block = BlockOf(ModuleFilePath("version_full"));
    void* value = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueW(block.data(), L"\\", &value, &length));
    EXPECT_EQ(length, sizeof(VS_FIXEDFILEINFO));
    const auto* const fixed = static_cast<const VS_FIXEDFILEINFO*>(value);
    EXPECT_EQ(fixed->dwSignature, VS_FFI_SIGNATURE);
    EXPECT_EQ(fixed->dwFileVersionMS, 0xFFFF0000U);
    EXPECT_EQ(fixed->dwProductVersionLS, 0x00030004U);
    EXPECT_EQ(fixed->dwFileFlags, 0x28U); // private and special build

    ASSERT_TRUE(VerQueryValueW(block.data(), L"\\VarFileInfo\\Translation", &value, &length));
    ASSERT_EQ(length, 12U);
    const auto* const pairs = static_cast<const WORD*>(value);
    EXPECT_EQ(std::vector<WORD>(pairs, pairs + 6),
              (std::vector<WORD>{0x407, 0x4E4, 0x409, 0x4B0, 0x40C, 0x4B0}));

    const std::wstring name(L"Gr\u00F6\u00DFe\0", 6); // with its NUL
    EXPECT_EQ(TextOf(block, L"\\StringFileInfo\\040704e4\\ProductName"), name);
    EXPECT_EQ(TextOf(block, L"\\stringfileinfo\\040C04B0\\productname"), name);
    EXPECT_EQ(TextOf(block, L"\\StringFileInfo\\040704e4\\ProductNam"), L"(none)");
    EXPECT_EQ(TextOf(block, L"\\StringFileInfo\\04110000\\ProductName"), L"(none)");
    EXPECT_FAILS(VerQueryValueW(block.data(), L"\\Nothing", &value, &length), ERROR_RESOURCE_TYPE_NOT_FOUND);
}

TEST(VersionFile, FilesWithoutAResourceAreRefused) {
    const auto size = [](const std::filesystem::path& path) {
        return GetFileVersionInfoSizeW(path.wstring().c_str(), nullptr);
    };
    EXPECT_FAILS(size("there-is-no-such-file"), ERROR_FILE_NOT_FOUND);
    const TemporaryFile empty("");
    const TemporaryFile text("MZ is how some files begin, and ELF how others");
    for (const std::filesystem::path& path : {ModuleFilePath("version_none"), empty.Path(), text.Path()}) {
        SetLastError(0);
        EXPECT_EQ(size(path), 0U) << path;
        EXPECT_NE(GetLastError(), 0U) << path;
    }
    unsigned char block[4] = {1, 2, 3, 4};
    EXPECT_FALSE(GetFileVersionInfoW(empty.Path().wstring().c_str(), 0, sizeof(block), block));
    EXPECT_EQ(block[0], 1);
}

/// What the ELF note holds, and what is read from it, is what the resource compiler puts into a PE file.
TEST(VersionFile, NoteAndResourceAreTheSameBlock) {
    if (PeFiles("version_plain").empty()) {
        GTEST_SKIP()
            << "modules are PE files here, or there was no resource compiler when the tests were built";
    }
    for (const char* const name : {"version_plain", "version_full"}) {
        for (const std::filesystem::path& file : PeFiles(name)) {
            EXPECT_EQ(BlockOf(file), BlockOf(ModuleFilePath(name))) << file;
        }
    }
}

} // namespace
