#include "krtpal/error.h"

#include <cerrno>
#include <cstdlib>

namespace krtpal {

namespace {

thread_local DWORD t_lastError = 0;

struct ErrnoRow {
    int number;
    DWORD error;
};

constexpr ErrnoRow kErrnoTable[] = {
    {0, ERROR_SUCCESS},
    {EPERM, ERROR_ACCESS_DENIED},
    {ENOENT, ERROR_FILE_NOT_FOUND},
    {EIO, ERROR_IO_DEVICE},
    {ENXIO, ERROR_NOT_READY},
    {EBADF, ERROR_INVALID_HANDLE},
    {EAGAIN, ERROR_NO_SYSTEM_RESOURCES},
    {EINTR, ERROR_OPERATION_ABORTED},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {EACCES, ERROR_ACCESS_DENIED},
    {EFAULT, ERROR_INVALID_ADDRESS},
    {EBUSY, ERROR_BUSY},
    {EEXIST, ERROR_ALREADY_EXISTS},
    {EXDEV, ERROR_NOT_SAME_DEVICE},
    {ENODEV, ERROR_NOT_SUPPORTED},
    {ENOTDIR, ERROR_PATH_NOT_FOUND},
    {EISDIR, ERROR_ACCESS_DENIED},
    {EINVAL, ERROR_INVALID_PARAMETER},
    {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
    {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENOTTY, ERROR_INVALID_HANDLE},
    {ETXTBSY, ERROR_SHARING_VIOLATION},
    {EFBIG, ERROR_FILE_TOO_LARGE},
    {ENOSPC, ERROR_DISK_FULL},
    {EDQUOT, ERROR_DISK_FULL},
    {ESPIPE, ERROR_NEGATIVE_SEEK},
    {EROFS, ERROR_WRITE_PROTECT},
    {EMLINK, ERROR_TOO_MANY_LINKS},
    {EPIPE, ERROR_BROKEN_PIPE},
    {ERANGE, ERROR_ARITHMETIC_OVERFLOW},
    {EOVERFLOW, ERROR_ARITHMETIC_OVERFLOW},
    {EDEADLK, ERROR_POSSIBLE_DEADLOCK},
    {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE},
    {ENOSYS, ERROR_CALL_NOT_IMPLEMENTED},
    {ENOTSUP, ERROR_NOT_SUPPORTED},
    {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},
    {ELOOP, ERROR_CANT_RESOLVE_FILENAME},
    {EILSEQ, ERROR_NO_UNICODE_TRANSLATION},
    {ETIMEDOUT, ERROR_TIMEOUT},
    {ECANCELED, ERROR_CANCELLED},
};

} // namespace

DWORD GetLastError() {
    return t_lastError;
}

void SetLastError(DWORD error) {
    t_lastError = error;
}

DWORD ErrorFromErrno(int number) {
    for (const ErrnoRow& row : kErrnoTable) {
        if (row.number == number) {
            return row.error;
        }
    }
    return ERROR_GEN_FAILURE;
}

HLOCAL LocalAlloc(UINT flags, SIZE_T bytes) {
    if ((flags & ~LMEM_ZEROINIT) != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    // A block of no bytes has an address of its own too.
    const SIZE_T size = bytes == 0 ? 1 : bytes;
    void* const memory = (flags & LMEM_ZEROINIT) != 0 ? std::calloc(1, size) : std::malloc(size);
    if (memory == nullptr) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    }
    return memory;
}

HLOCAL LocalFree(HLOCAL memory) {
    std::free(memory);
    return nullptr;
}

} // namespace krtpal
