#include "krtpal/debug.h"

#include "krtpal/common/text.h"
#include "krtpal/error.h"
#include "krtpal/posix/io/write.h"

#include <cstdlib>
#include <fcntl.h>
#include <mutex>
#include <string_view>
#include <unistd.h>

namespace krtpal {

namespace {

// Returns null, "stderr" or a file name. Read at each call, so that a running test can change it.
const char* Destination() {
    const char* const name = std::getenv("KRTBSS_DEBUG_OUTPUT");
    return name != nullptr && *name != '\0' ? name : nullptr;
}

// Write failures are ignored: there is no place to report them.
void Write(const char* destination, std::string_view text) {
    // Never destroyed: static destructors write, too.
    static auto* const guard = new std::mutex;
    const std::lock_guard lock(*guard);
    std::size_t done = 0;
    if (std::string_view(destination) == "stderr") {
        posix::WriteAll(STDERR_FILENO, text.data(), text.size(), &done);
        return;
    }
    const int file = open(destination, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (file != -1) {
        posix::WriteAll(file, text.data(), text.size(), &done);
        close(file);
    }
}

} // namespace

void OutputDebugStringW(LPCWSTR text) {
    const char* const destination = Destination();
    if (text == nullptr || destination == nullptr) {
        return;
    }
    const DWORD before = GetLastError();
    Write(destination, Utf8FromWide(text));
    SetLastError(before);
}

void OutputDebugStringA(LPCSTR text) {
    const char* const destination = Destination();
    if (text != nullptr && destination != nullptr) {
        Write(destination, text);
    }
}

} // namespace krtpal
