// Catches what the process writes as debug output.
//
//     DebugOutput output;
//     OutputDebugStringW(L"text");
//     EXPECT_EQ(output.Text(), L"text");
//
// One object at a time. On Linux the output is led to a file of its own through the environment variable,
// which is removed at the end; on Windows the exceptions are watched by which the system passes the text to a
// debugger.

#ifndef TESTS_SUPPORT_DEBUGOUTPUT_H
#define TESTS_SUPPORT_DEBUGOUTPUT_H

#include "krtpal/common/text.h"

#include <string>

#ifdef _WIN32

#include <windows.h>

#include <mutex>

class DebugOutput {
public:
    DebugOutput() {
        s_active = this;
        m_handler = AddVectoredExceptionHandler(1, &Watch);
    }
    DebugOutput(const DebugOutput&) = delete;
    DebugOutput& operator=(const DebugOutput&) = delete;
    ~DebugOutput() {
        RemoveVectoredExceptionHandler(m_handler);
        s_active = nullptr;
    }

    /// All text since construction
    std::wstring Text() {
        const std::lock_guard lock(m_guard);
        return m_text;
    }

private:
    /// Parameters: count of characters with the NUL, address of the text. Where the wide form is passed on,
    /// the system raises the narrow one too if nobody has taken the wide one.
    static LONG CALLBACK Watch(EXCEPTION_POINTERS* pointers) {
        constexpr DWORD narrowText = 0x40010006;
        constexpr DWORD wideText = 0x4001000A;
        const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
        if (s_active == nullptr || (record.ExceptionCode != narrowText && record.ExceptionCode != wideText)) {
            return EXCEPTION_CONTINUE_SEARCH;
        }
        const std::lock_guard lock(s_active->m_guard);
        if (record.ExceptionCode == wideText) {
            s_active->m_text += reinterpret_cast<const wchar_t*>(record.ExceptionInformation[1]);
        } else {
            s_active->m_text +=
                krtpal::WidenText(reinterpret_cast<const char*>(record.ExceptionInformation[1]));
        }
        return EXCEPTION_CONTINUE_EXECUTION;
    }

    inline static DebugOutput* s_active = nullptr;

    std::mutex m_guard;
    std::wstring m_text;
    void* m_handler = nullptr;
};

#else

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <unistd.h>

class DebugOutput {
public:
    DebugOutput() {
        char name[] = "/tmp/krtbss-debug-XXXXXX";
        close(mkstemp(name));
        m_file = name;
        setenv(kVariable, name, 1);
    }
    DebugOutput(const DebugOutput&) = delete;
    DebugOutput& operator=(const DebugOutput&) = delete;
    ~DebugOutput() {
        unsetenv(kVariable);
        unlink(m_file.c_str());
    }

    /// All text since construction
    std::wstring Text() {
        std::ifstream file(m_file, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        return krtpal::WideFromUtf8(bytes);
    }

private:
    static constexpr const char* kVariable = "KRTBSS_DEBUG_OUTPUT";

    std::string m_file;
};

#endif

#endif
