// The other process of the tests of named objects: sync_child ROLE NAME.

#include "Support.h"

#include <cstdio>
#include <string>

#ifdef __linux__
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

void Say(const char* line) {
    std::puts(line);
    std::fflush(stdout);
}

/// Takes the mutex and keeps it.
int Hold(const std::wstring& name) {
    const Handle mutex = Mutex(false, name.c_str());
    Say(WaitForSingleObject(mutex, kLongMs) == WAIT_OBJECT_0 ? "held" : "not held");
    Sleep(INFINITE);
    return 0;
}

/// Waits at the semaphore NAME-s, and answers each unit by an event.
int Answer(const std::wstring& name) {
    const Handle semaphore =
        OpenSemaphoreW(SYNCHRONIZE | SEMAPHORE_MODIFY_STATE, FALSE, (name + L"-s").c_str());
    const Handle answer = OpenEventW(EVENT_MODIFY_STATE, FALSE, (name + L"-e").c_str());
    Say(semaphore != nullptr && answer != nullptr ? "open" : "not open");
    for (int i = 0; i < 3; ++i) {
        if (WaitForSingleObject(semaphore, kLongMs) != WAIT_OBJECT_0 || !SetEvent(answer)) {
            return 1;
        }
    }
    return 0;
}

/// Waits on an event and a semaphore. Exit status 0 if the event came.
int WaitForEvent(const std::wstring& name) {
    const Handle event = AutoEvent(false, (name + L"-e").c_str());
    const Handle semaphore = Semaphore(0, 5, (name + L"-s").c_str());
    const HANDLE handles[] = {event, semaphore};
    Say("waiting");
    return WaitForMultipleObjects(2, handles, FALSE, kLongMs) == WAIT_OBJECT_0 ? 0 : 1;
}

/// Opens, locks, writes, releases and closes until it is killed.
int Work(const std::wstring& name) {
    Say("working");
    for (LONG i = 0;; ++i) {
        const Handle mutex = Mutex(false, (name + L"-m").c_str());
        const Handle event = AutoEvent(false, (name + L"-e").c_str());
        const Handle semaphore = Semaphore(0, 1000, (name + L"-s").c_str());
        const DWORD taken = WaitForSingleObject(mutex, kLongMs);
        if (taken != WAIT_OBJECT_0 && taken != WAIT_ABANDONED) {
            return 1;
        }
        SetEvent(event);
        ReleaseSemaphore(semaphore, 1, nullptr);
        WaitForSingleObject(semaphore, 0);
        WaitForSingleObject(event, 0);
        if (i % 3 != 0) {
            ReleaseMutex(mutex);
        }
    }
}

/// Opens the names as a newcomer. Exit status 0 if every result is one that is promised.
int Check(const std::wstring& name) {
    const auto isDefined = [](HANDLE handle) {
        const DWORD error = GetLastError();
        return handle != nullptr && (error == ERROR_SUCCESS || error == ERROR_ALREADY_EXISTS);
    };
    const Handle mutex = Mutex(false, (name + L"-m").c_str());
    const bool mutexIsDefined = isDefined(mutex);
    const Handle event = AutoEvent(false, (name + L"-e").c_str());
    const bool eventIsDefined = isDefined(event);
    const Handle semaphore = Semaphore(0, 1000, (name + L"-s").c_str());
    if (!mutexIsDefined || !eventIsDefined || !isDefined(semaphore)) {
        return 2;
    }
    const DWORD taken = WaitForSingleObject(mutex, kLongMs);
    if ((taken != WAIT_OBJECT_0 && taken != WAIT_ABANDONED) || !ReleaseMutex(mutex)) {
        return 3;
    }
    // What the dead left is signalled or not; what is signalled now must be seen.
    if (!SetEvent(event) || WaitForSingleObject(event, kLongMs) != WAIT_OBJECT_0 ||
        WaitForSingleObject(event, 0) != WAIT_TIMEOUT) {
        return 4;
    }
    return ReleaseSemaphore(semaphore, 1, nullptr) && WaitForSingleObject(semaphore, kLongMs) == WAIT_OBJECT_0
               ? 0
               : 5;
}

#ifdef __linux__
bool WriteText(const char* file, const std::string& text) {
    const int descriptor = open(file, O_WRONLY | O_CLOEXEC);
    const bool written = write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    close(descriptor);
    return written;
}

/// Meets folders of names that others may write, in a /dev/shm of its own. Says what was wrongly taken.
int Distrust(const std::wstring& name) {
    const std::string user = "0 " + std::to_string(geteuid()) + " 1";
    const std::string group = "0 " + std::to_string(getegid()) + " 1";
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0 || !WriteText("/proc/self/setgroups", "deny") ||
        !WriteText("/proc/self/uid_map", user) || !WriteText("/proc/self/gid_map", group) ||
        mount("none", "/dev/shm", "tmpfs", 0, "mode=1777") != 0) {
        Say("no namespace");
        return 0;
    }
    const std::string folder = "/dev/shm/krtbss-" + std::to_string(geteuid());
    for (const mode_t mode : {0770, 0702, 0777}) {
        mkdir(folder.c_str(), 0700);
        chmod(folder.c_str(), mode);
        if (AutoEvent(false, name.c_str()) || GetLastError() != ERROR_ACCESS_DENIED) {
            Say(("folder of mode " + std::to_string(mode)).c_str());
        }
        rmdir(folder.c_str());
    }
    mkdir("/dev/shm/other", 0700);
    if (symlink("/dev/shm/other", folder.c_str()) != 0 || AutoEvent(false, name.c_str())) {
        Say("link to a folder");
    }
    unlink(folder.c_str());
    mkdir(folder.c_str(), 0755);
    return AutoEvent(false, name.c_str()) ? 0 : 1;
}
#else
int Distrust(const std::wstring&) {
    return 97;
}
#endif

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        return 99;
    }
    const std::string role = argv[1];
    const std::string narrow = argv[2];
    const std::wstring name(narrow.begin(), narrow.end());
    return role == "hold"       ? Hold(name)
           : role == "answer"   ? Answer(name)
           : role == "wait"     ? WaitForEvent(name)
           : role == "work"     ? Work(name)
           : role == "check"    ? Check(name)
           : role == "distrust" ? Distrust(name)
                                : 98;
}
