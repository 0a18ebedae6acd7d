// A child process of a test: started, told from by lines of its standard output, killed, waited for.
//
//     ChildProcess child(SYNC_CHILD, {"hold", "name"});
//     ASSERT_EQ(child.ReadLine(), "ready");        // waits; empty when the output ended
//     child.Kill();                                // at once, without a chance to clean up
//     EXPECT_EQ(child.Wait(), ChildProcess::killed);
//
// A child that still runs is killed at the end of the object. Lines are short and plain ASCII. On Linux its
// standard input ends with CloseInput or with this process.

#ifndef TESTS_SUPPORT_CHILDPROCESS_H
#define TESTS_SUPPORT_CHILDPROCESS_H

#include "support/Wine.h"

#include <stdexcept>
#include <string>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#else
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
extern char** environ;
#endif

class ChildProcess {
public:
    static constexpr int killed = 137;

    /// Arguments hold neither blanks nor quotes. Throws std::runtime_error if the program can't be started.
    ChildProcess(const std::string& program, const std::vector<std::string>& arguments) {
#ifdef _WIN32
        SECURITY_ATTRIBUTES inherit{sizeof(inherit), nullptr, TRUE};
        HANDLE writeEnd = nullptr;
        if (!CreatePipe(&m_output, &writeEnd, &inherit, 0)) {
            throw std::runtime_error("no pipe");
        }
        SetHandleInformation(m_output, HANDLE_FLAG_INHERIT, 0);
        std::string line = '"' + program + '"';
        for (const std::string& argument : arguments) {
            line += ' ' + argument;
        }
        STARTUPINFOA startup{};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = writeEnd;
        startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
        PROCESS_INFORMATION process{};
        BOOL started = FALSE;
        // Wine now and then refuses to start a process while another one is being killed.
        for (int attempts = RunsUnderWine() ? 20 : 1; !started && attempts > 0; --attempts) {
            started = CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                                     &startup, &process);
            if (!started && attempts > 1) {
                Sleep(100);
            }
        }
        const DWORD error = GetLastError();
        CloseHandle(writeEnd);
        if (!started) {
            CloseHandle(m_output);
            throw std::runtime_error("cannot start " + program + ": error " + std::to_string(error));
        }
        CloseHandle(process.hThread);
        m_process = process.hProcess;
#else
        int input[2];
        int output[2];
        if (pipe2(input, O_CLOEXEC) != 0 || pipe2(output, O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipe");
        }
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
        std::vector<char*> line{const_cast<char*>(program.c_str())};
        for (const std::string& argument : arguments) {
            line.push_back(const_cast<char*>(argument.c_str()));
        }
        line.push_back(nullptr);
        const int error = posix_spawn(&m_process, program.c_str(), &actions, nullptr, line.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(input[0]);
        close(output[1]);
        m_input = input[1];
        m_output = output[0];
        if (error != 0) {
            CloseInput();
            close(m_output);
            throw std::runtime_error("cannot start " + program);
        }
#endif
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess() {
        Kill();
        Wait();
#ifdef _WIN32
        CloseHandle(m_output);
        CloseHandle(m_process);
#else
        CloseInput();
        close(m_output);
#endif
    }

#ifndef _WIN32
    /// Returns when the child runs no more, until it is told to continue.
    void Stop() {
        kill(m_process, SIGSTOP);
        waitpid(m_process, nullptr, WUNTRACED);
    }
    void Continue() {
        kill(m_process, SIGCONT);
    }
    void CloseInput() {
        if (m_input >= 0) {
            close(m_input);
            m_input = -1;
        }
    }
#endif

    /// The next line without its end.
    std::string ReadLine() {
        std::string line;
        for (char c = 0; ReadByte(&c) && c != '\n';) {
            if (c != '\r') {
                line += c;
            }
        }
        return line;
    }

    void Kill() {
        if (m_hasEnded) {
            return;
        }
#ifdef _WIN32
        TerminateProcess(m_process, killed);
#else
        kill(m_process, SIGKILL);
#endif
    }

    /// The exit status, or `killed`.
    int Wait() {
        if (!m_hasEnded) {
            m_hasEnded = true;
#ifdef _WIN32
            DWORD status = 0;
            WaitForSingleObject(m_process, INFINITE);
            GetExitCodeProcess(m_process, &status);
            m_status = static_cast<int>(status);
#else
            int status = 0;
            waitpid(m_process, &status, 0);
            m_status = WIFEXITED(status) ? WEXITSTATUS(status) : killed;
#endif
        }
        return m_status;
    }

private:
    bool ReadByte(char* c) {
#ifdef _WIN32
        DWORD count = 0;
        return ReadFile(m_output, c, 1, &count, nullptr) && count == 1;
#else
        return read(m_output, c, 1) == 1;
#endif
    }

#ifdef _WIN32
    HANDLE m_output = nullptr;
    HANDLE m_process = nullptr;
#else
    int m_input = -1;
    int m_output = -1;
    pid_t m_process = 0;
#endif
    bool m_hasEnded = false;
    int m_status = 0;
};

#endif
