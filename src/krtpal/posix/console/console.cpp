#include "krtpal/console.h"

#include "krtpal/common/text.h"
#include "krtpal/error.h"
#include "krtpal/posix/io/write.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace krtpal {

namespace {

// A standard stream. Its handle is the address of its entry.
struct Stream {
    int descriptor;
};

Stream g_streams[] = {{STDIN_FILENO}, {STDOUT_FILENO}, {STDERR_FILENO}};

const Stream* FindStream(HANDLE handle) {
    for (const Stream& stream : g_streams) {
        if (&stream == handle) {
            return &stream;
        }
    }
    return nullptr;
}

BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

BOOL WriteTo(const Stream& stream, const void* data, std::size_t bytes, std::size_t* done) {
    const int error = posix::WriteAll(stream.descriptor, data, bytes, done);
    return error == 0 ? TRUE : Fail(ErrorFromErrno(error));
}

} // namespace

HANDLE GetStdHandle(DWORD stream) {
    if (stream != STD_INPUT_HANDLE && stream != STD_OUTPUT_HANDLE && stream != STD_ERROR_HANDLE) {
        SetLastError(ERROR_INVALID_HANDLE);
        return INVALID_HANDLE_VALUE;
    }
    Stream& entry = g_streams[STD_INPUT_HANDLE - stream];
    return fcntl(entry.descriptor, F_GETFD) == -1 ? nullptr : &entry;
}

BOOL WriteFile(HANDLE handle, LPCVOID data, DWORD bytes, DWORD* written, OVERLAPPED* overlapped) {
    if (written != nullptr) {
        *written = 0;
    }
    const Stream* const stream = FindStream(handle);
    if (stream == nullptr) {
        return Fail(ERROR_INVALID_HANDLE);
    }
    if (overlapped != nullptr) {
        return Fail(ERROR_NOT_SUPPORTED);
    }
    if (written == nullptr || (data == nullptr && bytes != 0)) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    std::size_t done = 0;
    const BOOL result = WriteTo(*stream, data, bytes, &done);
    *written = static_cast<DWORD>(done);
    return result;
}

BOOL GetConsoleMode(HANDLE handle, DWORD* mode) {
    const Stream* const stream = FindStream(handle);
    termios settings{};
    if (stream == nullptr || tcgetattr(stream->descriptor, &settings) != 0) {
        return Fail(ERROR_INVALID_HANDLE);
    }
    if (mode == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if (stream->descriptor == STDIN_FILENO) {
        *mode = ((settings.c_lflag & ISIG) != 0 ? ENABLE_PROCESSED_INPUT : 0) |
                ((settings.c_lflag & ICANON) != 0 ? ENABLE_LINE_INPUT : 0) |
                ((settings.c_lflag & ECHO) != 0 ? ENABLE_ECHO_INPUT : 0);
    } else {
        *mode = ENABLE_PROCESSED_OUTPUT | ENABLE_WRAP_AT_EOL_OUTPUT;
    }
    return TRUE;
}

BOOL WriteConsoleW(HANDLE handle, const void* text, DWORD length, DWORD* written, LPVOID reserved) {
    if (written != nullptr) {
        *written = 0;
    }
    const Stream* const stream = FindStream(handle);
    if (stream == nullptr || isatty(stream->descriptor) == 0) {
        return Fail(ERROR_INVALID_HANDLE);
    }
    if (reserved != nullptr || (text == nullptr && length != 0)) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const std::string bytes = Utf8FromWide({static_cast<const wchar_t*>(text), length});
    std::size_t done = 0;
    if (!WriteTo(*stream, bytes.data(), bytes.size(), &done)) {
        return FALSE;
    }
    if (written != nullptr) {
        *written = length;
    }
    return TRUE;
}

} // namespace krtpal
