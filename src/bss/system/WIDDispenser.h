// WIDDispenser: a counter for the identifiers of objects.
//
//     bss::WIDDispenser ids(0);
//     long first = ids.GetNewID();              // 1
//
// Threads: all operations may be used from any thread. No identifier is returned twice, unless the counter is
// set back or wraps at the end of long.

#ifndef BSS_SYSTEM_WIDDISPENSER_H
#define BSS_SYSTEM_WIDDISPENSER_H

#include "bss/Export.h"

#include <atomic>

namespace bss {

/// A counter that threads share.
class KRTBSS_API WIDDispenser {
public:
    /// Starts at `start`: the first new identifier is `start` + 1.
    explicit WIDDispenser(long start);
    /// Copies the current value. Copies count on their own.
    WIDDispenser(const WIDDispenser& other);
    /// Copies the current value.
    WIDDispenser& operator=(const WIDDispenser& other);
    virtual ~WIDDispenser();

    /// Returns the current value, which is the last identifier given.
    long GetCurrent() const;
    /// See GetCurrent.
    long GetCurrentID() const;
    /// Adds 1 and returns the new value.
    long GetNewID();
    /// See GetNewID.
    long GetNext();
    /// Sets the current value.
    void SetCurrent(long id);

private:
    std::atomic<long> m_nCurrent;
};

} // namespace bss

#endif
