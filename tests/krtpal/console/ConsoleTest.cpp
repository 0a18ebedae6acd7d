#include "krtpal/console.h"
#include "krtpal/common/console.h"
#include "krtpal/error.h"
#include "krtpal/text.h"
#include "support/Expect.h"

#include <string>

#ifdef _WIN32
#include <vector>

namespace {

/// Leads a standard stream to a file while it lives.
class StreamToFile {
public:
    explicit StreamToFile(DWORD stream) : m_stream(stream), m_before(GetStdHandle(stream)) {
        wchar_t folder[MAX_PATH];
        wchar_t name[MAX_PATH];
        GetTempPathW(MAX_PATH, folder);
        GetTempFileNameW(folder, L"krt", 0, name);
        m_file = CreateFileW(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                             FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        SetStdHandle(stream, m_file);
    }
    StreamToFile(const StreamToFile&) = delete;
    StreamToFile& operator=(const StreamToFile&) = delete;
    ~StreamToFile() {
        SetStdHandle(m_stream, m_before);
        CloseHandle(m_file);
    }

    std::string Content() {
        std::string content(GetFileSize(m_file, nullptr), '\0');
        DWORD read = 0;
        SetFilePointer(m_file, 0, nullptr, FILE_BEGIN);
        ReadFile(m_file, content.data(), static_cast<DWORD>(content.size()), &read, nullptr);
        return content.substr(0, read);
    }

private:
    DWORD m_stream;
    HANDLE m_before;
    HANDLE m_file;
};

} // namespace
#else
#include <csignal>
#include <fcntl.h>
#include <pthread.h>
#include <thread>
#include <unistd.h>

namespace {

int DescriptorOf(DWORD stream) {
    return stream == STD_OUTPUT_HANDLE ? STDOUT_FILENO : STDERR_FILENO;
}

/// Leads a standard stream to a descriptor while it lives. The descriptor becomes the object's.
class StreamTo {
public:
    StreamTo(DWORD stream, int target)
        : m_stream(DescriptorOf(stream)), m_before(fcntl(m_stream, F_DUPFD_CLOEXEC, 10)), m_target(target) {
        dup2(target, m_stream);
    }
    StreamTo(const StreamTo&) = delete;
    StreamTo& operator=(const StreamTo&) = delete;
    ~StreamTo() {
        dup2(m_before, m_stream);
        close(m_before);
        close(m_target);
    }

private:
    int m_stream;
    int m_before;
    int m_target;
};

int TemporaryFile() {
    char name[] = "/tmp/krtbss-console-XXXXXX";
    const int file = mkstemp(name);
    unlink(name);
    return file;
}

class StreamToFile {
public:
    explicit StreamToFile(DWORD stream) : m_file(TemporaryFile()), m_redirection(stream, m_file) {}

    std::string Content() {
        std::string content(1'000'000, '\0');
        const ssize_t length = pread(m_file, content.data(), content.size(), 0);
        return content.substr(0, length < 0 ? 0 : static_cast<std::size_t>(length));
    }

private:
    int m_file;
    StreamTo m_redirection;
};

} // namespace
#endif

TEST(Console, UnknownStreamsAndHandlesAreRefused) {
    DWORD written = 7;
    DWORD mode = 0;
    EXPECT_EQ(GetStdHandle(1), INVALID_HANDLE_VALUE);
    EXPECT_FAILS(WriteFile(INVALID_HANDLE_VALUE, "a", 1, &written, nullptr), ERROR_INVALID_HANDLE);
    EXPECT_EQ(written, 0U);
    EXPECT_FAILS(GetConsoleMode(INVALID_HANDLE_VALUE, &mode), ERROR_INVALID_HANDLE);
    EXPECT_FAILS(krtpal::WriteConsoleText(STD_INPUT_HANDLE, L"text"), ERROR_INVALID_PARAMETER);
    const StreamToFile output(STD_OUTPUT_HANDLE);
    SetLastError(0);
    EXPECT_FALSE(GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode));
    EXPECT_FALSE(WriteConsoleW(GetStdHandle(STD_OUTPUT_HANDLE), L"a", 1, &written, nullptr));
    EXPECT_NE(GetLastError(), 0U);
}

TEST(Console, TextReachesFilesAsUtf8WithoutALocale) {
    for (const DWORD stream : {STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
        StreamToFile file(stream);
        const std::wstring text = L"\u00E4 \u20AC \U0001F600\n" + std::wstring(50'000, L'\u00FC');
        EXPECT_TRUE(krtpal::WriteConsoleText(stream, text) && krtpal::WriteConsoleText(stream, L""));
        std::string expected = "\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80\n";
        for (int i = 0; i < 50'000; ++i) {
            expected += "\xC3\xBC";
        }
        EXPECT_TRUE(file.Content() == expected);
    }
}

#ifndef _WIN32
TEST(Console, TextIsWrittenWholeThroughInterruptionsAndFullPipes) {
    struct sigaction action {};
    struct sigaction before {};
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, &before); // without SA_RESTART
    for (const int flags : {0, O_NONBLOCK}) {
        int ends[2];
        ASSERT_EQ(pipe2(ends, flags | O_CLOEXEC), 0);
        std::string got;
        std::thread reader([&got, &ends, writer = pthread_self()] {
            char piece[3'001];
            for (ssize_t count = -1; count != 0;) {
                if (got.size() < 400'000) {
                    usleep(100); // the pipe is full again, and the writer waits
                    pthread_kill(writer, SIGALRM);
                }
                count = read(ends[0], piece, sizeof(piece));
                got.append(piece, count < 0 ? 0 : static_cast<std::size_t>(count));
            }
        });
        bool written = false;
        {
            const StreamTo output(STD_OUTPUT_HANDLE, ends[1]);
            written = krtpal::WriteConsoleText(STD_OUTPUT_HANDLE, std::wstring(500'000, L'y'));
        }
        reader.join();
        close(ends[0]);
        EXPECT_TRUE(written);
        EXPECT_TRUE(got == std::string(500'000, 'y')) << got.size();
    }
    sigaction(SIGALRM, &before, nullptr);
}

TEST(Console, LostReadersAndFullDisksAreReported) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    close(ends[0]);
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    const auto errorOfWriting = [](int target) {
        const StreamTo output(STD_OUTPUT_HANDLE, target);
        return krtpal::WriteConsoleText(STD_OUTPUT_HANDLE, L"text") ? ERROR_SUCCESS : GetLastError();
    };
    EXPECT_EQ(errorOfWriting(ends[1]), ERROR_BROKEN_PIPE);
    EXPECT_EQ(errorOfWriting(open("/dev/full", O_WRONLY | O_CLOEXEC)), ERROR_DISK_FULL);
    std::signal(SIGPIPE, before);
}

TEST(Console, TerminalsTakeWideText) {
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (terminal == -1 || grantpt(terminal) != 0 || unlockpt(terminal) != 0) {
        GTEST_SKIP() << "no pseudo-terminals here";
    }
    const int program = open(ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_NE(program, -1);
    DWORD mode = 0;
    DWORD count = 0;
    bool written = false;
    {
        const StreamTo output(STD_OUTPUT_HANDLE, program);
        const HANDLE stream = GetStdHandle(STD_OUTPUT_HANDLE);
        written = GetConsoleMode(stream, &mode) && WriteConsoleW(stream, L"a\u00FC", 2, &count, nullptr) &&
                  krtpal::WriteConsoleText(STD_OUTPUT_HANDLE, L"\u20AC");
    }
    char bytes[7] = {};
    for (ssize_t length = 0, got = 1; length < 6 && got > 0; length += got) {
        got = read(terminal, bytes + length, static_cast<std::size_t>(6 - length)); // comes in pieces
    }
    close(terminal);
    EXPECT_TRUE(written);
    EXPECT_EQ(count, 2U);
    EXPECT_STREQ(bytes, "a\xC3\xBC\xE2\x82\xAC");
}
#else
constexpr const char* kWhy = "signals, /dev/full and pseudo-terminals are those of Linux";
SKIPPED_TEST(Console, TextIsWrittenWholeThroughInterruptionsAndFullPipes, kWhy)
SKIPPED_TEST(Console, LostReadersAndFullDisksAreReported, kWhy)
SKIPPED_TEST(Console, TerminalsTakeWideText, kWhy)
#endif
