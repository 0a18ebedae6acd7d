// WExclusion: detects whether another instance of a program runs: on the machine, on the desktop, in the
// logon session or for the user.
//
//     bss::WExclusion single;
//     if (!single.SetExclusion(L"instrument control", bss::WExclusion::Machine)) {
//         ...                                   // another instance runs
//     }
//
// The exclusion is the existence of a named mutex, on which nothing waits. It ends with the last object that
// holds it, and with the process, however the process ends.
//
// Copies hold the exclusion as well. A move transfers it.
//
// Threads: an object may be used from one thread at a time.

#ifndef BSS_SYSTEM_WEXCLUSION_H
#define BSS_SYSTEM_WEXCLUSION_H

#include "bss/Export.h"
#include "krtpal/types.h"

#include <string>

namespace bss {

/// Holds at most one exclusion.
class KRTBSS_API WExclusion {
public:
    /// The scope of an exclusion. It becomes a part of the name of the mutex.
    enum _kind : int { Machine = 0, Desktop = 1, Logon = 2, User = 3 };

    /// Holds nothing.
    WExclusion();
    /// Holds the exclusion of `other` as well.
    WExclusion(const WExclusion& other);
    /// Takes the exclusion of `other`, which then holds nothing.
    WExclusion(WExclusion&& other) noexcept;
    /// Releases the held exclusion, then holds that of `other` as well.
    WExclusion& operator=(const WExclusion& other);
    /// Exchanges the exclusions of both objects.
    WExclusion& operator=(WExclusion&& other) noexcept;
    /// Releases the exclusion.
    ~WExclusion();

    /// Releases the held exclusion, then acquires the one of this name and scope. `name` may be the number of
    /// a string of the library's module in place of a pointer. Returns true if no other object held it.
    /// Returns false if another object held it (this one then holds it too), or if the mutex could not be
    /// created.
    virtual bool SetExclusion(const wchar_t* name, _kind kind);
    /// Releases the held exclusion. Does nothing if there is none.
    virtual void ReleaseExclusion();

protected:
    /// Returns the full name of the mutex. An unknown scope is treated as Machine.
    virtual std::wstring CreateExclusionName(const wchar_t* name, _kind kind);

private:
    /// The mutex; null if no exclusion is held.
    HANDLE m_handle = nullptr;
};

} // namespace bss

#endif
