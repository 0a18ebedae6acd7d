// Last error, texts of the system, message templates.
//
//     if (!SystemTimeToFileTime(&time, &ticks)) {
//         const DWORD error = GetLastError();
//         throw ... L"cannot convert the time: " + krtpal::SystemText(error) + L" (" +
//             std::to_wstring(error) + L")"
//     }
//
// A call reports a failure by its return value, and the reason by the last error. Successful calls leave the
// last error unchanged, except where their comment says so (CreateEventW and its relatives).
//
// FormatMessageW replaces the inserts %1 to %99 of a template:
//
//     wchar_t text[64];
//     const DWORD_PTR values[] = {reinterpret_cast<DWORD_PTR>(L"laser"), 42};
//     FormatMessageW(FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY, L"%1: %2!u!", 0, 0, text,
//                    64, reinterpret_cast<std::va_list*>(const_cast<DWORD_PTR*>(values)));
//
// Threads: the last error belongs to the calling thread and is 0 at its start. All calls may be used from any
// thread.

#ifndef KRTPAL_ERROR_H
#define KRTPAL_ERROR_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#include <cstdarg>

#ifndef _WIN32

namespace krtpal {

/// Success, functions and files.
inline constexpr DWORD NO_ERROR = 0;
inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_INVALID_FUNCTION = 1;
/// Files and paths; named objects that do not exist.
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
/// Limits, access and handles.
inline constexpr DWORD ERROR_TOO_MANY_OPEN_FILES = 4;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
/// A handle that is not open or of another kind; a name that belongs to an object of another kind.
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
/// Memory, formats and data.
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_BAD_FORMAT = 11;
inline constexpr DWORD ERROR_INVALID_DATA = 13;
inline constexpr DWORD ERROR_OUTOFMEMORY = 14;
/// Files and devices.
inline constexpr DWORD ERROR_NOT_SAME_DEVICE = 17;
inline constexpr DWORD ERROR_NO_MORE_FILES = 18;
inline constexpr DWORD ERROR_WRITE_PROTECT = 19;
inline constexpr DWORD ERROR_NOT_READY = 21;
inline constexpr DWORD ERROR_WRITE_FAULT = 29;
inline constexpr DWORD ERROR_READ_FAULT = 30;
inline constexpr DWORD ERROR_GEN_FAILURE = 31;
inline constexpr DWORD ERROR_SHARING_VIOLATION = 32;
inline constexpr DWORD ERROR_LOCK_VIOLATION = 33;
inline constexpr DWORD ERROR_HANDLE_EOF = 38;
inline constexpr DWORD ERROR_HANDLE_DISK_FULL = 39;
/// An argument that Windows accepts and this layer does not.
inline constexpr DWORD ERROR_NOT_SUPPORTED = 50;
/// The file exists.
inline constexpr DWORD ERROR_FILE_EXISTS = 80;
/// An argument that no system accepts.
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
/// Pipes, buffers of names and space on disk.
inline constexpr DWORD ERROR_BROKEN_PIPE = 109;
inline constexpr DWORD ERROR_BUFFER_OVERFLOW = 111;
inline constexpr DWORD ERROR_DISK_FULL = 112;
inline constexpr DWORD ERROR_CALL_NOT_IMPLEMENTED = 120;
inline constexpr DWORD ERROR_SEM_TIMEOUT = 121;
/// The caller's buffer is too small; the call states whether part of the result was stored.
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
/// Names of files and objects.
inline constexpr DWORD ERROR_INVALID_NAME = 123;
/// Modules and their exports.
inline constexpr DWORD ERROR_MOD_NOT_FOUND = 126;
inline constexpr DWORD ERROR_PROC_NOT_FOUND = 127;
/// Files, folders and resources in use.
inline constexpr DWORD ERROR_NEGATIVE_SEEK = 131;
inline constexpr DWORD ERROR_DIR_NOT_EMPTY = 145;
inline constexpr DWORD ERROR_BUSY = 170;
/// The object of that name exists: set by a successful CreateEventW, CreateMutexW or CreateSemaphoreW that
/// opened it.
inline constexpr DWORD ERROR_ALREADY_EXISTS = 183;
/// Formats, lengths of names, sizes of files and data.
inline constexpr DWORD ERROR_BAD_EXE_FORMAT = 193;
inline constexpr DWORD ERROR_FILENAME_EXCED_RANGE = 206;
inline constexpr DWORD ERROR_FILE_TOO_LARGE = 223;
inline constexpr DWORD ERROR_MORE_DATA = 234;
/// The message is empty: FormatMessageW returned 0 without another failure.
inline constexpr DWORD ERROR_NO_WORK_DONE = 235;
/// Returned by a wait whose time-out passed. It is a return value, not a last error.
inline constexpr DWORD WAIT_TIMEOUT = 258;
/// Names of folders, deadlocks, addresses and arithmetic.
inline constexpr DWORD ERROR_DIRECTORY = 267;
inline constexpr DWORD ERROR_POSSIBLE_DEADLOCK = 1131;
inline constexpr DWORD ERROR_INVALID_ADDRESS = 487;
inline constexpr DWORD ERROR_ARITHMETIC_OVERFLOW = 534;
/// ReleaseMutex by a thread that does not own the mutex.
inline constexpr DWORD ERROR_NOT_OWNER = 288;
/// ReleaseSemaphore beyond the maximum count.
inline constexpr DWORD ERROR_TOO_MANY_POSTS = 298;
/// Aborted operations, flags, conversions and devices.
inline constexpr DWORD ERROR_OPERATION_ABORTED = 995;
inline constexpr DWORD ERROR_INVALID_FLAGS = 1004;
inline constexpr DWORD ERROR_NO_UNICODE_TRANSLATION = 1113;
inline constexpr DWORD ERROR_IO_DEVICE = 1117;
inline constexpr DWORD ERROR_TOO_MANY_LINKS = 1142;
inline constexpr DWORD ERROR_NOT_FOUND = 1168;
/// The thread has no access token of its own: set by every OpenThreadToken.
inline constexpr DWORD ERROR_NO_TOKEN = 1008;
inline constexpr DWORD ERROR_CANCELLED = 1223;
inline constexpr DWORD ERROR_PRIVILEGE_NOT_HELD = 1314;
/// Receivers, their classes and message queues (krtpal/message.h).
inline constexpr DWORD ERROR_INVALID_WINDOW_HANDLE = 1400;
inline constexpr DWORD ERROR_CANNOT_FIND_WND_CLASS = 1407;
inline constexpr DWORD ERROR_CLASS_ALREADY_EXISTS = 1410;
inline constexpr DWORD ERROR_CLASS_DOES_NOT_EXIST = 1411;
inline constexpr DWORD ERROR_CLASS_HAS_WINDOWS = 1412;
inline constexpr DWORD ERROR_INVALID_THREAD_ID = 1444;
/// Resources of the system, time-outs and quotas.
inline constexpr DWORD ERROR_NO_SYSTEM_RESOURCES = 1450;
inline constexpr DWORD ERROR_TIMEOUT = 1460;
inline constexpr DWORD ERROR_NOT_ENOUGH_QUOTA = 1816;
inline constexpr DWORD ERROR_CANT_RESOLVE_FILENAME = 1921;
/// Version resources, string tables and message texts.
inline constexpr DWORD ERROR_RESOURCE_DATA_NOT_FOUND = 1812;
inline constexpr DWORD ERROR_RESOURCE_TYPE_NOT_FOUND = 1813;
inline constexpr DWORD ERROR_RESOURCE_NAME_NOT_FOUND = 1814;
inline constexpr DWORD ERROR_RESOURCE_LANG_NOT_FOUND = 1815;
inline constexpr DWORD ERROR_MR_MID_NOT_FOUND = 317;

/// Flags of FormatMessageW. FORMAT_MESSAGE_FROM_HMODULE is declared and fails with ERROR_NOT_SUPPORTED. Of
/// the line widths in FORMAT_MESSAGE_MAX_WIDTH_MASK, 0 and 255 are supported.
inline constexpr DWORD FORMAT_MESSAGE_ALLOCATE_BUFFER = 0x00000100;
inline constexpr DWORD FORMAT_MESSAGE_IGNORE_INSERTS = 0x00000200;
inline constexpr DWORD FORMAT_MESSAGE_FROM_STRING = 0x00000400;
inline constexpr DWORD FORMAT_MESSAGE_FROM_HMODULE = 0x00000800;
inline constexpr DWORD FORMAT_MESSAGE_FROM_SYSTEM = 0x00001000;
inline constexpr DWORD FORMAT_MESSAGE_ARGUMENT_ARRAY = 0x00002000;
inline constexpr DWORD FORMAT_MESSAGE_MAX_WIDTH_MASK = 0x000000FF;

/// Languages of FormatMessageW.
inline constexpr WORD LANG_NEUTRAL = 0;
inline constexpr WORD SUBLANG_DEFAULT = 1;
/// Returns the language identifier of a primary language and a sublanguage.
constexpr WORD MAKELANGID(WORD language, WORD sublanguage) {
    return static_cast<WORD>((sublanguage << 10) | language);
}

/// Returns the last error of the calling thread.
KRTPAL_API DWORD WINAPI GetLastError();
/// Sets the last error of the calling thread.
KRTPAL_API void WINAPI SetLastError(DWORD error);

/// Formats a template (FROM_STRING, which is used if both are given) or the system's text of an error number
/// (FROM_SYSTEM, in English). Returns the number of characters without the NUL, 0 on failure.
/// `size` counts characters. With ALLOCATE_BUFFER `buffer` is the address of a wchar_t*, which receives
/// memory of at least `size` characters; the caller owns it and releases it by LocalFree. On failure it is
/// null. A buffer of the caller that is too small receives as much as fits, with a NUL.
/// REQUIRES: inserts take their values from an array (ARGUMENT_ARRAY) of DWORD_PTR: text by address, numbers
/// by value. CONTRACT.md has the grammar of templates and formats.
/// Fails with ERROR_INVALID_PARAMETER for null arguments, unknown flags or a malformed template,
/// ERROR_NOT_SUPPORTED for a va_list, other line widths or formats, ERROR_MR_MID_NOT_FOUND for a number
/// without a text, ERROR_RESOURCE_LANG_NOT_FOUND for a language other than neutral and English,
/// ERROR_INSUFFICIENT_BUFFER, ERROR_NOT_ENOUGH_MEMORY, ERROR_NO_WORK_DONE for an empty result.
/// Unlike Windows, the length of the result has no limit, and texts exist for the numbers above only.
KRTPAL_API DWORD WINAPI FormatMessageW(DWORD flags, LPCVOID source, DWORD messageId, DWORD languageId,
                                       LPWSTR buffer, DWORD size, std::va_list* arguments);

/// Returns the Win32 error of an errno value, ERROR_GEN_FAILURE for a value without one. All of this layer
/// uses this table. Linux only; the last error is unchanged.
KRTPAL_API DWORD ErrorFromErrno(int number);

} // namespace krtpal

#define KRTPAL_NAMES                                                                                         \
    using krtpal::NO_ERROR, krtpal::ERROR_SUCCESS, krtpal::ERROR_INVALID_FUNCTION,                           \
        krtpal::ERROR_FILE_NOT_FOUND, krtpal::ERROR_PATH_NOT_FOUND, krtpal::ERROR_TOO_MANY_OPEN_FILES,       \
        krtpal::ERROR_ACCESS_DENIED, krtpal::ERROR_INVALID_HANDLE, krtpal::ERROR_NOT_ENOUGH_MEMORY,          \
        krtpal::ERROR_BAD_FORMAT, krtpal::ERROR_INVALID_DATA, krtpal::ERROR_OUTOFMEMORY,                     \
        krtpal::ERROR_NOT_SAME_DEVICE, krtpal::ERROR_NO_MORE_FILES, krtpal::ERROR_WRITE_PROTECT,             \
        krtpal::ERROR_NOT_READY, krtpal::ERROR_WRITE_FAULT, krtpal::ERROR_READ_FAULT,                        \
        krtpal::ERROR_GEN_FAILURE, krtpal::ERROR_SHARING_VIOLATION, krtpal::ERROR_LOCK_VIOLATION,            \
        krtpal::ERROR_HANDLE_EOF, krtpal::ERROR_HANDLE_DISK_FULL, krtpal::ERROR_NOT_SUPPORTED,               \
        krtpal::ERROR_FILE_EXISTS, krtpal::ERROR_INVALID_PARAMETER, krtpal::ERROR_BROKEN_PIPE,               \
        krtpal::ERROR_BUFFER_OVERFLOW, krtpal::ERROR_DISK_FULL, krtpal::ERROR_CALL_NOT_IMPLEMENTED,          \
        krtpal::ERROR_SEM_TIMEOUT, krtpal::ERROR_INSUFFICIENT_BUFFER, krtpal::ERROR_INVALID_NAME,            \
        krtpal::ERROR_MOD_NOT_FOUND, krtpal::ERROR_PROC_NOT_FOUND, krtpal::ERROR_NEGATIVE_SEEK,              \
        krtpal::ERROR_DIR_NOT_EMPTY, krtpal::ERROR_BUSY, krtpal::ERROR_ALREADY_EXISTS,                       \
        krtpal::ERROR_BAD_EXE_FORMAT, krtpal::ERROR_FILENAME_EXCED_RANGE, krtpal::ERROR_FILE_TOO_LARGE,      \
        krtpal::ERROR_MORE_DATA, krtpal::ERROR_NO_WORK_DONE, krtpal::WAIT_TIMEOUT, krtpal::ERROR_DIRECTORY,  \
        krtpal::ERROR_POSSIBLE_DEADLOCK, krtpal::ERROR_INVALID_ADDRESS, krtpal::ERROR_ARITHMETIC_OVERFLOW,   \
        krtpal::ERROR_NOT_OWNER, krtpal::ERROR_TOO_MANY_POSTS, krtpal::ERROR_OPERATION_ABORTED,              \
        krtpal::ERROR_INVALID_FLAGS, krtpal::ERROR_NO_UNICODE_TRANSLATION, krtpal::ERROR_IO_DEVICE,          \
        krtpal::ERROR_TOO_MANY_LINKS, krtpal::ERROR_NOT_FOUND, krtpal::ERROR_NO_TOKEN,                       \
        krtpal::ERROR_CANCELLED, krtpal::ERROR_PRIVILEGE_NOT_HELD, krtpal::ERROR_INVALID_WINDOW_HANDLE,      \
        krtpal::ERROR_CANNOT_FIND_WND_CLASS, krtpal::ERROR_CLASS_ALREADY_EXISTS,                             \
        krtpal::ERROR_CLASS_DOES_NOT_EXIST, krtpal::ERROR_CLASS_HAS_WINDOWS,                                 \
        krtpal::ERROR_INVALID_THREAD_ID, krtpal::ERROR_NO_SYSTEM_RESOURCES, krtpal::ERROR_TIMEOUT,           \
        krtpal::ERROR_NOT_ENOUGH_QUOTA, krtpal::ERROR_CANT_RESOLVE_FILENAME,                                 \
        krtpal::ERROR_RESOURCE_DATA_NOT_FOUND, krtpal::ERROR_RESOURCE_TYPE_NOT_FOUND,                        \
        krtpal::ERROR_RESOURCE_NAME_NOT_FOUND, krtpal::ERROR_RESOURCE_LANG_NOT_FOUND,                        \
        krtpal::ERROR_MR_MID_NOT_FOUND, krtpal::FORMAT_MESSAGE_ALLOCATE_BUFFER,                              \
        krtpal::FORMAT_MESSAGE_IGNORE_INSERTS, krtpal::FORMAT_MESSAGE_FROM_STRING,                           \
        krtpal::FORMAT_MESSAGE_FROM_HMODULE, krtpal::FORMAT_MESSAGE_FROM_SYSTEM,                             \
        krtpal::FORMAT_MESSAGE_ARGUMENT_ARRAY, krtpal::FORMAT_MESSAGE_MAX_WIDTH_MASK, krtpal::LANG_NEUTRAL,  \
        krtpal::SUBLANG_DEFAULT, krtpal::MAKELANGID, krtpal::GetLastError, krtpal::SetLastError,             \
        krtpal::FormatMessageW
namespace bss {
KRTPAL_NAMES;
}
namespace hss {
KRTPAL_NAMES;
}
#undef KRTPAL_NAMES
#endif

#endif
