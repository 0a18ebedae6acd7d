#include "krtpal/common/console.h"

#include <cstdio>
#include <ext/stdio_filebuf.h>
#include <ext/stdio_sync_filebuf.h>
#include <iostream>
#include <mutex>
#include <string>

namespace krtpal {

namespace {

// Collects text until it is flushed. Locked: several logs on one stream share it.
class ConsoleBuffer final : public std::wstreambuf {
public:
    ConsoleBuffer(DWORD handle, std::wostream& standard, std::FILE* file)
        : m_handle(handle), m_standard(standard), m_file(file) {}

protected:
    int_type overflow(int_type c) override {
        if (!traits_type::eq_int_type(c, traits_type::eof())) {
            const std::lock_guard guard(m_guard);
            m_text += traits_type::to_char_type(c);
        }
        return traits_type::not_eof(c);
    }

    std::streamsize xsputn(const wchar_t* text, std::streamsize count) override {
        const std::lock_guard guard(m_guard);
        m_text.append(text, static_cast<std::size_t>(count));
        return count;
    }

    int sync() override {
        const std::lock_guard guard(m_guard);
        // Text that other code wrote before is written first.
        m_standard.flush();
        std::fflush(m_file);
        const bool written = WriteConsoleText(m_handle, m_text);
        m_text.clear();
        return written ? 0 : -1;
    }

private:
    std::mutex m_guard;
    std::wstring m_text;
    DWORD m_handle;
    std::wostream& m_standard;
    std::FILE* m_file;
};

std::FILE* FileUnder(std::wstreambuf* buffer) {
    if (auto* synchronised = dynamic_cast<__gnu_cxx::stdio_sync_filebuf<wchar_t>*>(buffer)) {
        return synchronised->file();
    }
    if (auto* buffered = dynamic_cast<__gnu_cxx::stdio_filebuf<wchar_t>*>(buffer)) {
        return buffered->file();
    }
    return nullptr;
}

} // namespace

std::wstreambuf* ConsoleBufferFor(const std::wostream& stream) {
    std::FILE* const file = FileUnder(stream.rdbuf());
    if (file == stdout) {
        static auto* const output = new ConsoleBuffer(STD_OUTPUT_HANDLE, std::wcout, stdout);
        return output;
    }
    if (file == stderr) {
        static auto* const error = new ConsoleBuffer(STD_ERROR_HANDLE, std::wcerr, stderr);
        return error;
    }
    return stream.rdbuf();
}

} // namespace krtpal
