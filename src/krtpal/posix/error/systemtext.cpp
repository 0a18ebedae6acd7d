#include "krtpal/posix/error/systemtext.h"

#include "krtpal/error.h"

namespace krtpal::posix {

namespace {

struct TextRow {
    DWORD error;
    const wchar_t* text;
};

constexpr TextRow kTexts[] = {
    {ERROR_SUCCESS, L"Success."},
    {ERROR_INVALID_FUNCTION, L"Invalid function."},
    {ERROR_FILE_NOT_FOUND, L"File not found."},
    {ERROR_PATH_NOT_FOUND, L"Path not found."},
    {ERROR_TOO_MANY_OPEN_FILES, L"Too many open files."},
    {ERROR_ACCESS_DENIED, L"Access denied."},
    {ERROR_INVALID_HANDLE, L"Invalid handle."},
    {ERROR_NOT_ENOUGH_MEMORY, L"Not enough memory."},
    {ERROR_BAD_FORMAT, L"Bad format."},
    {ERROR_INVALID_DATA, L"Invalid data."},
    {ERROR_OUTOFMEMORY, L"Out of memory."},
    {ERROR_NOT_SAME_DEVICE, L"Not same device."},
    {ERROR_NO_MORE_FILES, L"No more files."},
    {ERROR_WRITE_PROTECT, L"Write protected."},
    {ERROR_NOT_READY, L"Not ready."},
    {ERROR_WRITE_FAULT, L"Write fault."},
    {ERROR_READ_FAULT, L"Read fault."},
    {ERROR_GEN_FAILURE, L"General failure."},
    {ERROR_SHARING_VIOLATION, L"Sharing violation."},
    {ERROR_LOCK_VIOLATION, L"Lock violation."},
    {ERROR_HANDLE_EOF, L"End of file."},
    {ERROR_HANDLE_DISK_FULL, L"Disk full."},
    {ERROR_NOT_SUPPORTED, L"Request not supported."},
    {ERROR_FILE_EXISTS, L"File exists."},
    {ERROR_INVALID_PARAMETER, L"Invalid parameter."},
    {ERROR_BROKEN_PIPE, L"Broken pipe."},
    {ERROR_DISK_FULL, L"Disk full."},
    {ERROR_CALL_NOT_IMPLEMENTED, L"Call not implemented."},
    {ERROR_SEM_TIMEOUT, L"Semaphore timeout."},
    {ERROR_INSUFFICIENT_BUFFER, L"Insufficient buffer."},
    {ERROR_INVALID_NAME, L"Invalid name."},
    {ERROR_MOD_NOT_FOUND, L"Module not found."},
    {ERROR_PROC_NOT_FOUND, L"Procedure not found."},
    {ERROR_NEGATIVE_SEEK, L"Negative seek."},
    {ERROR_DIR_NOT_EMPTY, L"Directory is not empty."},
    {ERROR_BUSY, L"Resource in use."},
    {ERROR_ALREADY_EXISTS, L"File already exists."},
    {ERROR_BAD_EXE_FORMAT, L"Bad EXE format for %1."},
    {ERROR_FILENAME_EXCED_RANGE, L"File name is too long."},
    {ERROR_FILE_TOO_LARGE, L"File too large."},
    {ERROR_MORE_DATA, L"More data available."},
    {WAIT_TIMEOUT, L"Timeout."},
    {ERROR_DIRECTORY, L"Directory name invalid."},
    {ERROR_MR_MID_NOT_FOUND, L"Message 0x%1 not found in file %2."},
    {ERROR_INVALID_ADDRESS, L"Invalid address."},
    {ERROR_ARITHMETIC_OVERFLOW, L"Arithmetic overflow."},
    {ERROR_RESOURCE_DATA_NOT_FOUND, L"Resource data not found."},
    {ERROR_RESOURCE_TYPE_NOT_FOUND, L"Resource type not found."},
    {ERROR_NO_TOKEN, L"No token."},
    {ERROR_BUFFER_OVERFLOW, L"Buffer overflow."},
    {ERROR_NOT_OWNER, L"The caller is not the owner."},
    {ERROR_TOO_MANY_POSTS, L"Too many posts to a semaphore."},
    {ERROR_INVALID_WINDOW_HANDLE, L"Invalid window handle."},
    {ERROR_CANNOT_FIND_WND_CLASS, L"Window class not found."},
    {ERROR_CLASS_ALREADY_EXISTS, L"Class already exists."},
    {ERROR_CLASS_DOES_NOT_EXIST, L"Class does not exist."},
    {ERROR_CLASS_HAS_WINDOWS, L"Class still has open windows."},
    {ERROR_INVALID_THREAD_ID, L"Invalid thread ID."},
    {ERROR_NOT_ENOUGH_QUOTA, L"Not enough quota."},
    {ERROR_OPERATION_ABORTED, L"I/O operation aborted."},
    {ERROR_INVALID_FLAGS, L"Invalid flags."},
    {ERROR_NO_UNICODE_TRANSLATION, L"No Unicode translation."},
    {ERROR_IO_DEVICE, L"I/O device error."},
    {ERROR_POSSIBLE_DEADLOCK, L"Possible deadlock."},
    {ERROR_TOO_MANY_LINKS, L"Too many links."},
    {ERROR_NOT_FOUND, L"Element not found."},
    {ERROR_CANCELLED, L"Operation canceled by user."},
    {ERROR_PRIVILEGE_NOT_HELD, L"Privilege not held."},
    {ERROR_NO_SYSTEM_RESOURCES, L"No system resources."},
    {ERROR_TIMEOUT, L"Timeout."},
    {ERROR_RESOURCE_LANG_NOT_FOUND, L"Resource language not found."},
    {ERROR_CANT_RESOLVE_FILENAME, L"The filename cannot be resolved."},
};

} // namespace

const wchar_t* FindSystemText(DWORD error) {
    for (const TextRow& row : kTexts) {
        if (row.error == error) {
            return row.text;
        }
    }
    return nullptr;
}

} // namespace krtpal::posix
