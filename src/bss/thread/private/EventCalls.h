// The calls on events, by names that members of the event classes do not hide.

#ifndef BSS_THREAD_PRIVATE_EVENTCALLS_H
#define BSS_THREAD_PRIVATE_EVENTCALLS_H

#include "krtpal/sync.h"

namespace bss {

inline bool SignalEvent(HANDLE event) {
    return SetEvent(event) != FALSE;
}
inline bool ClearEvent(HANDLE event) {
    return ResetEvent(event) != FALSE;
}
inline bool SignalAndClearEvent(HANDLE event) {
    return PulseEvent(event) != FALSE;
}

} // namespace bss

#endif
