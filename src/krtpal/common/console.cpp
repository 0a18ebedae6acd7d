#include "krtpal/common/console.h"

#include "krtpal/common/text.h"
#include "krtpal/error.h"

#include <algorithm>

namespace krtpal {

namespace {

// Consoles reject long texts (64 KiB in old versions).
constexpr std::size_t kConsolePiece = 8'000;
constexpr std::size_t kFilePiece = 1U << 24U;

bool WriteToConsole(HANDLE console, std::wstring_view text) {
    while (!text.empty()) {
        const auto piece = static_cast<DWORD>(std::min(text.size(), kConsolePiece));
        DWORD written = 0;
        if (!WriteConsoleW(console, text.data(), piece, &written, nullptr)) {
            return false;
        }
        if (written == 0) {
            SetLastError(ERROR_WRITE_FAULT);
            return false;
        }
        text.remove_prefix(written);
    }
    return true;
}

bool WriteBytes(HANDLE stream, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto piece = static_cast<DWORD>(std::min(bytes.size(), kFilePiece));
        DWORD written = 0;
        if (!WriteFile(stream, bytes.data(), piece, &written, nullptr)) {
            return false;
        }
        if (written == 0) {
            SetLastError(ERROR_WRITE_FAULT);
            return false;
        }
        bytes.remove_prefix(written);
    }
    return true;
}

} // namespace

bool WriteConsoleText(DWORD stream, std::wstring_view text) {
    if (stream != STD_OUTPUT_HANDLE && stream != STD_ERROR_HANDLE) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return false;
    }
    const HANDLE handle = GetStdHandle(stream);
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE) {
        SetLastError(ERROR_INVALID_HANDLE);
        return false;
    }
    DWORD mode = 0;
    if (GetConsoleMode(handle, &mode)) {
        return WriteToConsole(handle, text);
    }
    return WriteBytes(handle, Utf8FromWide(text));
}

} // namespace krtpal
