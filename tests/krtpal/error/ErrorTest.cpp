#include "krtpal/error.h"
#include "krtpal/common/error.h"
#include "krtpal/memory.h"
#include "support/Expect.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <thread>
#include <utility>

TEST(LastError, BelongsToTheThread) {
    // Waits set the error of the calling thread on Windows: both threads set theirs before one of them looks,
    // and none waits.
    std::atomic<int> ready = 0;
    const auto keeps = [&ready](DWORD error) {
        SetLastError(error);
        for (++ready; ready != 2;) {
        }
        EXPECT_EQ(GetLastError(), error);
    };
    std::thread other(keeps, static_cast<DWORD>(ERROR_ACCESS_DENIED));
    keeps(ERROR_INVALID_HANDLE);
    other.join();
}

TEST(LocalMemory, IsZeroedOnDemandAndFreedToNull) {
    auto* const memory = static_cast<char*>(LocalAlloc(LPTR, 4096));
    ASSERT_NE(memory, nullptr);
    EXPECT_EQ(std::count(memory, memory + 4096, 0), 4096);
    EXPECT_EQ(LocalFree(memory), nullptr);
    EXPECT_EQ(LocalFree(nullptr), nullptr);
    const HLOCAL empty = LocalAlloc(LMEM_FIXED, 0);
    EXPECT_NE(empty, nullptr);
    LocalFree(empty);
}

TEST(SystemText, HasNoLineEndAndKeepsTheLastError) {
    SetLastError(ERROR_DISK_FULL);
    const std::wstring text = krtpal::SystemText(ERROR_FILE_NOT_FOUND);
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(text.find_first_of(L"\r\n"), std::wstring::npos);
    EXPECT_NE(text.back(), L' ');
    EXPECT_NE(text, krtpal::SystemText(ERROR_ACCESS_DENIED));
    EXPECT_EQ(krtpal::SystemText(0xEFFFFFFF), L"Unknown error");
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_DISK_FULL));
}

#ifndef _WIN32
TEST(Errno, HasTheNumberOfItsMeaningAndATextForIt) {
    const std::pair<int, DWORD> errors[] = {{0, ERROR_SUCCESS},
                                            {ENOENT, ERROR_FILE_NOT_FOUND},
                                            {EACCES, ERROR_ACCESS_DENIED},
                                            {EPERM, ERROR_ACCESS_DENIED},
                                            {EEXIST, ERROR_ALREADY_EXISTS},
                                            {EINVAL, ERROR_INVALID_PARAMETER},
                                            {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
                                            {ENOSPC, ERROR_DISK_FULL},
                                            {EPIPE, ERROR_BROKEN_PIPE},
                                            {ETIMEDOUT, ERROR_TIMEOUT},
                                            {987654, ERROR_GEN_FAILURE}};
    for (const auto& [number, error] : errors) {
        EXPECT_EQ(krtpal::ErrorFromErrno(number), error) << number;
    }
    for (int number = 0; number < 134; ++number) {
        EXPECT_NE(krtpal::SystemText(krtpal::ErrorFromErrno(number)), L"Unknown error")
            << std::strerror(number);
    }
}
#else
SKIPPED_TEST(Errno, HasTheNumberOfItsMeaningAndATextForIt, "there are no errno values to map")
#endif
