#include "krtpal/file.h"
#include "support/Expect.h"
#include "support/Wine.h"

#include <filesystem>
#include <string>
#include <tuple>

namespace {

const std::filesystem::path folder = std::filesystem::temp_directory_path() / "krtbss_file_test";

std::wstring In(const wchar_t* name) {
    return folder.wstring() + L"/" + name;
}

class PlatformFile : public testing::Test {
protected:
    PlatformFile() { std::filesystem::create_directories(folder); }
    ~PlatformFile() override { std::filesystem::remove_all(folder); }
};

TEST_F(PlatformFile, IsWrittenAppendedToAndReadByWidePath) {
    const std::wstring path = In(L"gr\u00FC\u00DFe \u4E2D.dat");
    std::FILE* file = nullptr;
    for (const wchar_t* const mode : {L"wb", L"ab"}) {
        ASSERT_EQ(_wfopen_s(&file, path.c_str(), mode), 0);
        std::fputs("one\n", file);
        std::fclose(file);
    }
    ASSERT_EQ(_wfopen_s(&file, path.c_str(), L"rb+"), 0);
    char text[20];
    EXPECT_EQ(std::string(text, std::fread(text, 1, sizeof(text), file)), "one\none\n");
    std::fclose(file);
    EXPECT_TRUE(std::filesystem::exists(folder / u8"gr\u00FC\u00DFe \u4E2D.dat"));
}

TEST_F(PlatformFile, FailuresAreInTheResultAndInErrno) {
    const std::tuple<std::wstring, const wchar_t*, errno_t> rows[] = {
        {In(L"missing"), L"rb", ENOENT},
        {In(L"missing\\or/not"), L"wb", ENOENT},
        {folder.wstring(), L"rb", EACCES},
        {folder.wstring(), L"wb", EACCES},
    };
    for (const auto& [path, mode, error] : rows) {
        std::FILE* file = stdout;
        errno = 0;
        EXPECT_EQ(_wfopen_s(&file, path.c_str(), mode), error);
        EXPECT_EQ(errno, error);
        EXPECT_EQ(file, nullptr);
    }
}

#ifndef _WIN32
TEST_F(PlatformFile, BadArgumentsAreRefused) {
    std::FILE* file = stdout;
    EXPECT_EQ(_wfopen_s(nullptr, L"a", L"rb"), EINVAL);
    EXPECT_EQ(_wfopen_s(&file, nullptr, L"rb"), EINVAL);
    EXPECT_EQ(file, nullptr);
    EXPECT_EQ(_wfopen_s(&file, L"a", nullptr), EINVAL);
    for (const wchar_t* mode : {L"", L"x", L"rt", L"rb, ccs=UTF-8", L"wbx"}) {
        EXPECT_EQ(_wfopen_s(&file, In(L"a").c_str(), mode), EINVAL);
    }
    EXPECT_EQ(_wfopen_s(&file, In(L"\xD800").c_str(), L"wb"), EILSEQ);
    EXPECT_TRUE(std::filesystem::is_empty(folder));
    EXPECT_EQ(_wcserror_s(nullptr, 10, ENOENT), EINVAL);
    wchar_t text[1] = {L'x'};
    EXPECT_EQ(_wcserror_s(text, 0, ENOENT), EINVAL);
    EXPECT_EQ(text[0], L'x');
}
#else
SKIPPED_TEST_F(PlatformFile, BadArgumentsAreRefused,
               "bad arguments of the C library end the program on Windows")
#endif

TEST(PlatformErrnoText, IsCutToTheRoom) {
    wchar_t wide[260];
    char narrow[260];
    const std::tuple<int, std::size_t, std::string> rows[] = {{ENOENT, 260, "No such file or directory"},
                                                              {ENOENT, 8, "No such"},
                                                              {ENOSPC, 1, ""},
                                                              {54321, 260, "Unknown error"}};
    for (const auto& [number, room, text] : rows) {
        if (room == 260 || !RunsUnderWine()) { // which does not look at the room
            ASSERT_EQ(_wcserror_s(wide, room, number), 0);
            EXPECT_EQ(std::wstring(wide), std::wstring(text.begin(), text.end()));
        }
        ASSERT_EQ(strerror_s(narrow, room, number), 0);
        EXPECT_EQ(narrow, text);
    }
}

} // namespace
