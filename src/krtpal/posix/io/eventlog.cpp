#include "krtpal/eventlog.h"

#include "krtpal/common/text.h"
#include "krtpal/error.h"
#include "krtpal/posix/kernel/handle.h"
#include "krtpal/security.h"
#include "krtpal/sync.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace krtpal {

namespace {

// Size that all common daemons accept; RFC 3164 has 1024 bytes.
constexpr std::size_t kLongestDatagram = 8192;

std::string SocketPath() {
    const char* const path = std::getenv("KRTBSS_SYSLOG_SOCKET");
    return path == nullptr ? "/dev/log" : path;
}

// Returns facility (1 user, 10 security for audits) and severity (RFC 3164).
int PriorityOf(WORD type) {
    constexpr int kUser = 1 * 8;
    constexpr int kSecurity = 10 * 8;
    switch (type) {
    case EVENTLOG_ERROR_TYPE:
        return kUser + 3;
    case EVENTLOG_WARNING_TYPE:
        return kUser + 4;
    case EVENTLOG_AUDIT_SUCCESS:
        return kSecurity + 5;
    case EVENTLOG_AUDIT_FAILURE:
        return kSecurity + 4;
    default:
        return kUser + 6;
    }
}

class EventSource final : public posix::KernelObject {
public:
    explicit EventSource(std::string name)
        : KernelObject(posix::ObjectKind::EventSource), m_name(std::move(name)) {}
    ~EventSource() override { Disconnect(); }
    void AddHandle() override {}
    void DropHandle() override {}

    // Returns 0 or an errno value.
    int Connect() {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = SocketPath();
        if (path.size() >= sizeof(address.sun_path)) {
            return ENAMETOOLONG;
        }
        path.copy(address.sun_path, path.size());
        Disconnect();
        m_socket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        if (m_socket == -1) {
            return errno;
        }
        if (connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
            const int error = errno;
            Disconnect();
            return error;
        }
        return 0;
    }

    int Send(WORD type, const std::string& text) {
        const std::lock_guard lock(m_mutex);
        const std::string datagram = Format(type, text);
        // A daemon that was started again has another socket.
        for (const bool again : {false, true}) {
            if (m_socket == -1 || again) {
                if (const int error = Connect(); error != 0) {
                    return error;
                }
            }
            if (send(m_socket, datagram.data(), datagram.size(), MSG_NOSIGNAL) >= 0) {
                return 0;
            }
        }
        return errno;
    }

private:
    std::string Format(WORD type, const std::string& text) const {
        const std::time_t now = std::time(nullptr);
        std::tm local{};
        localtime_r(&now, &local);
        char time[32];
        // RFC 3164 has English names in every locale.
        static constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                  "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
        std::snprintf(time, sizeof(time), "%s %2d %02d:%02d:%02d", kMonths[local.tm_mon], local.tm_mday,
                      local.tm_hour, local.tm_min, local.tm_sec);
        std::string datagram(1, '<');
        datagram.append(std::to_string(PriorityOf(type)))
            .append(1, '>')
            .append(time)
            .append(1, ' ')
            .append(m_name);
        datagram.append(1, '[').append(std::to_string(getpid())).append("]: ").append(text);
        if (datagram.size() > kLongestDatagram) {
            std::size_t end = kLongestDatagram;
            while (end > 0 && (static_cast<unsigned char>(datagram[end]) & 0xC0) == 0x80) {
                --end; // not inside a character
            }
            datagram.resize(end);
        }
        return datagram;
    }
    void Disconnect() {
        if (m_socket != -1) {
            close(std::exchange(m_socket, -1));
        }
    }

    std::mutex m_mutex;
    std::string m_name;
    int m_socket = -1;
};

BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

} // namespace

HANDLE RegisterEventSourceW(LPCWSTR server, LPCWSTR source) {
    if (server != nullptr || source == nullptr || *source == L'\0') {
        SetLastError(server != nullptr ? ERROR_NOT_SUPPORTED : ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    std::string name = NarrowText(source);
    // A blank ends the name for readers of the log.
    std::replace_if(
        name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) <= ' '; }, '_');
    auto* const made = new EventSource(std::move(name));
    posix::Reference<posix::KernelObject> reference(made);
    if (const int error = made->Connect(); error != 0) {
        SetLastError(ErrorFromErrno(error));
        return nullptr;
    }
    return posix::OpenHandle(std::move(reference));
}

BOOL DeregisterEventSource(HANDLE source) {
    {
        const posix::UsedHandle used(source);
        if (used.Object() == nullptr || used.Object()->Kind() != posix::ObjectKind::EventSource) {
            return Fail(ERROR_INVALID_HANDLE);
        }
    }
    return CloseHandle(source);
}

BOOL ReportEventW(HANDLE source, WORD type, WORD /*category*/, DWORD /*eventId*/, PSID /*user*/, WORD count,
                  DWORD /*dataSize*/, LPCWSTR* texts, LPVOID /*data*/) {
    const posix::UsedHandle used(source);
    if (used.Object() == nullptr || used.Object()->Kind() != posix::ObjectKind::EventSource) {
        return Fail(ERROR_INVALID_HANDLE);
    }
    if (count == 0 || texts == nullptr || texts[0] == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    std::string text = NarrowText(texts[0]);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
    const int error = static_cast<EventSource*>(used.Object())->Send(type, text);
    return error == 0 ? TRUE : Fail(ErrorFromErrno(error));
}

} // namespace krtpal
