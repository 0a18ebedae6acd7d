#include "krtpal/posix/io/write.h"

#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace krtpal::posix {

int WriteAll(int descriptor, const void* data, std::size_t bytes, std::size_t* done) {
    const char* const text = static_cast<const char*>(data);
    *done = 0;
    while (*done < bytes) {
        const ssize_t count = write(descriptor, text + *done, bytes - *done);
        if (count >= 0) {
            *done += static_cast<std::size_t>(count);
        } else if (errno == EAGAIN) {
            // Ends if the reader reads or closes.
            pollfd ready{descriptor, POLLOUT, 0};
            poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

} // namespace krtpal::posix
