// Entries in the system's log: read back from the log daemon's socket on Linux, and through the registry and
// the module's message table on Windows.

#include "bss/exception/WEventLog.h"
#include "bss/module.h"
#include "krtpal/error.h"
#include "krtpal/registry.h"
#include "support/Expect.h"
#include "support/Threads.h"

#include <cstdlib>
#include <string>
#include <vector>

#ifdef _WIN32

#include <windows.h>

SKIPPED_TEST(SystemLog, EntriesAreReadBackFromTheDaemon, "there is no log daemon on Windows")

TEST(SystemLog, SourceIsRegisteredWithTheModuleAsItsMessageFile) {
    EXPECT_FALSE(bss::WEventLog::Write(L"before", bss::WEventLog::Error));
    ASSERT_TRUE(bss::WEventLog::Register(L"krtbss test source"));
    EXPECT_TRUE(bss::WEventLog::Register("another name")); // the first stays
    EXPECT_TRUE(bss::WEventLog::Write(L"a text", bss::WEventLog::Warning));
    EXPECT_TRUE(bss::WEventLog::Write("a text", static_cast<bss::WEventLog::e_event>(9)));
    bss::WEventLog::Destroy();
    EXPECT_FALSE(bss::WEventLog::Write(L"after", bss::WEventLog::Error));

    const std::wstring log = L"SYSTEM\\CurrentControlSet\\Services\\Eventlog\\Application\\";
    const std::wstring source = log + L"krtbss test source";
    const auto read = [&source](const wchar_t* name, DWORD kind) {
        wchar_t value[300] = {};
        DWORD size = sizeof(value);
        EXPECT_EQ(RegGetValueW(HKEY_LOCAL_MACHINE, source.c_str(), name, kind, nullptr, value, &size),
                  ERROR_SUCCESS);
        return std::wstring(value);
    };
    wchar_t module[MAX_PATH] = {};
    GetModuleFileNameW(bss::GetBSSHandle(), module, MAX_PATH);
    EXPECT_EQ(read(L"EventMessageFile", RRF_RT_REG_SZ), module);
    EXPECT_EQ(read(L"CategoryMessageFile", RRF_RT_REG_SZ), module);
    EXPECT_EQ(read(L"CategoryCount", RRF_RT_REG_DWORD), L"\x1");
    EXPECT_EQ(read(L"TypesSupported", RRF_RT_REG_DWORD), L"\x1F");
    HKEY none = nullptr;
    EXPECT_NE(RegOpenKeyExW(HKEY_LOCAL_MACHINE, (log + L"another name").c_str(), 0, KEY_READ, &none),
              ERROR_SUCCESS);
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, source.c_str());

    // What a viewer of the log makes of an entry
    wchar_t text[64] = {};
    DWORD_PTR inserts[] = {reinterpret_cast<DWORD_PTR>(L"what was written")};
    const auto format = [&](DWORD id) {
        FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_ARGUMENT_ARRAY, bss::GetBSSHandle(), id,
                       0, text, 64, reinterpret_cast<va_list*>(inserts));
        return std::wstring(text);
    };
    EXPECT_EQ(format(1), L"(1)\r\n");
    EXPECT_EQ(format(1001), L"what was written\r\n");
}

#else

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

/// A log daemon: a datagram socket to which the environment points.
class Daemon {
public:
    Daemon() { Start(); }
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;
    ~Daemon() {
        Stop();
        bss::WEventLog::Destroy();
        unsetenv("KRTBSS_SYSLOG_SOCKET");
    }
    void Start() {
        m_path = testing::TempDir() + "krtbss-log-" + std::to_string(getpid());
        unlink(m_path.c_str());
        setenv("KRTBSS_SYSLOG_SOCKET", m_path.c_str(), 1);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        m_path.copy(address.sun_path, sizeof(address.sun_path) - 1);
        m_socket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        EXPECT_EQ(bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
        const timeval limit{20, 0};
        setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
    }
    void Stop() {
        close(m_socket);
        unlink(m_path.c_str());
    }
    /// The next entry: priority, what stands between the time and the text, and the text.
    std::vector<std::string> Read() const {
        std::string datagram(70'000, '\0');
        const ssize_t length = recv(m_socket, datagram.data(), datagram.size(), 0);
        datagram.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
        const std::size_t name = datagram.find('>') + 1 + std::size("Mmm dd hh:mm:ss");
        const std::size_t colon = datagram.find("]: ");
        if (colon == std::string::npos || colon < name) {
            return {datagram};
        }
        return {datagram.substr(1, datagram.find('>') - 1), datagram.substr(name, colon + 1 - name),
                datagram.substr(colon + 3)};
    }

private:
    std::string m_path;
    int m_socket = -1;
};

using Entry = std::vector<std::string>;

TEST(SystemLog, EntriesAreReadBackFromTheDaemon) {
    const Daemon daemon;
    EXPECT_FALSE(bss::WEventLog::Write(L"before", bss::WEventLog::Error));
    ASSERT_TRUE(bss::WEventLog::Register(L"krtbss test"));
    EXPECT_TRUE(bss::WEventLog::Register("another name")); // the first stays
    const std::string name = "krtbss_test[" + std::to_string(getpid()) + "]";
    const std::pair<int, const char*> kinds[] = {{1, "11"}, {2, "12"}, {3, "14"},
                                                 {4, "85"}, {5, "84"}, {77, "14"}};
    for (const auto& [kind, priority] : kinds) {
        EXPECT_TRUE(bss::WEventLog::Write(L"\u00e4 \U0001F600 100 %s\r\nnext",
                                          static_cast<bss::WEventLog::e_event>(kind)));
        EXPECT_EQ(daemon.Read(), (Entry{priority, name, "\u00e4 \U0001F600 100 %s  next"})) << kind;
    }
    EXPECT_TRUE(bss::WEventLog::Write("narrow \xC3\xA4", bss::WEventLog::Warning));
    EXPECT_EQ(daemon.Read(), (Entry{"12", name, "narrow \u00e4"}));
    EXPECT_FALSE(bss::WEventLog::Write(static_cast<const char*>(nullptr), bss::WEventLog::Warning));

    // A long text is cut between two characters.
    EXPECT_TRUE(bss::WEventLog::Write(std::wstring(100'000, L'\u4e2d').c_str(), bss::WEventLog::Warning));
    const std::string cut = daemon.Read().back();
    EXPECT_GT(cut.size(), 8000U);
    EXPECT_LE(cut.size(), 8192U);
    EXPECT_EQ(cut.size() % 3, 0U);

    RunInThreads(4, [](int) { bss::WEventLog::Write("one of four", bss::WEventLog::Error); });
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(daemon.Read().back(), "one of four");
    }
}

TEST(SystemLog, WithoutADaemonNothingIsLoggedAndNothingFails) {
    setenv("KRTBSS_SYSLOG_SOCKET", "/nonexistent/socket", 1);
    EXPECT_FALSE(bss::WEventLog::Register(L"source"));
    EXPECT_FALSE(bss::WEventLog::Write(L"text", bss::WEventLog::Error));
    Daemon daemon;
    EXPECT_FALSE(bss::WEventLog::Register(L"source")); // until Destroy
    bss::WEventLog::Destroy();
    for (const std::size_t length : {300U, 206U, 207U}) { // the longest that the key's name has room for
        EXPECT_EQ(bss::WEventLog::Register(std::wstring(length, L'n').c_str()), length == 206) << length;
        bss::WEventLog::Destroy();
    }
    EXPECT_FALSE(bss::WEventLog::Register(static_cast<const char*>(nullptr)));
    EXPECT_TRUE(bss::WEventLog::Register(L"source"));
    daemon.Stop();
    EXPECT_FALSE(bss::WEventLog::Write(L"text", bss::WEventLog::Error));
    daemon.Start(); // started anew
    EXPECT_TRUE(bss::WEventLog::Write(L"again", bss::WEventLog::Error));
    EXPECT_EQ(daemon.Read().back(), "again");
}

} // namespace

#endif
