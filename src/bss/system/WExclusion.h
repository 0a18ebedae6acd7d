// WExclusion: tells whether another instance of something runs: on the machine, the desktop, in the logon or
// for the user.
//
//     bss::WExclusion single;
//     if (!single.SetExclusion(L"instrument control", bss::WExclusion::Machine)) {
//         ...                                   // another one is there
//     }
//
// The exclusion is the presence of a named mutex, which is never waited on. It ends with the object, and with
// the process, however that ends.
//
// A copy holds the exclusion, too: it goes when the last of both does. A move hands it over.
//
// Threads: one object serves one thread.

#ifndef BSS_SYSTEM_WEXCLUSION_H
#define BSS_SYSTEM_WEXCLUSION_H

#include "bss/Export.h"
#include "krtpal/types.h"

#include <string>

namespace bss {

class KRTBSS_API WExclusion {
public:
    enum _kind : int { Machine = 0, Desktop = 1, Logon = 2, User = 3 };

    WExclusion();
    WExclusion(const WExclusion& other);
    WExclusion(WExclusion&& other) noexcept;
    WExclusion& operator=(const WExclusion& other);
    WExclusion& operator=(WExclusion&& other) noexcept;
    ~WExclusion();

    /// Gives up what is held, then takes the name. True if nobody held it; false if somebody did (this object
    /// then holds it as well) or if it could not be had. `name` may be the number of a string of the
    /// library's module in place of a pointer.
    virtual bool SetExclusion(const wchar_t* name, _kind kind);
    virtual void ReleaseExclusion();

protected:
    /// The full name of the mutex. Scopes that are not known count as the machine.
    virtual std::wstring CreateExclusionName(const wchar_t* name, _kind kind);

private:
    HANDLE m_handle = nullptr;
};

} // namespace bss

#endif
