// The waits that both generations of locks share.

#ifndef BSS_THREAD_PRIVATE_WAIT_H
#define BSS_THREAD_PRIVATE_WAIT_H

#include "krtpal/types.h"

namespace bss::wait {

/// Values from 0xFFFFFFFF up are for ever.
DWORD TimeOut(unsigned long timeoutMs);
/// True exactly when the object was had. False for a null handle.
bool ForObject(HANDLE handle, unsigned long timeoutMs);
/// The same, and dispatches messages meanwhile. The handle is read anew in each round.
bool ForObjectOrInput(const HANDLE& handle, unsigned long timeoutMs, unsigned long wakeMask);

} // namespace bss::wait

#endif
