// WIDDispenser: counts up identifiers of objects.
//
//     bss::WIDDispenser ids(0);
//     long first = ids.GetNewID();              // 1
//
// Threads: all operations may be used from any thread. Numbers wrap at the end of long.

#ifndef BSS_SYSTEM_WIDDISPENSER_H
#define BSS_SYSTEM_WIDDISPENSER_H

#include "bss/Export.h"

#include <atomic>

namespace bss {

class KRTBSS_API WIDDispenser {
public:
    explicit WIDDispenser(long start);
    WIDDispenser(const WIDDispenser& other);
    WIDDispenser& operator=(const WIDDispenser& other);
    virtual ~WIDDispenser();

    long GetCurrent() const;
    long GetCurrentID() const;
    /// Adds 1 and answers the new value.
    long GetNewID();
    long GetNext();
    void SetCurrent(long id);

private:
    std::atomic<long> m_nCurrent;
};

} // namespace bss

#endif
