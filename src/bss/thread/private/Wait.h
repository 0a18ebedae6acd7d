// Waits for the handle of one object, shared by both families of locks.

#ifndef BSS_THREAD_PRIVATE_WAIT_H
#define BSS_THREAD_PRIVATE_WAIT_H

#include "krtpal/types.h"

namespace bss::wait {

/// Returns the system's time-out. Values from 0xFFFFFFFF up give INFINITE.
DWORD TimeOut(unsigned long timeoutMs);
/// Waits for the object. Returns true if it was signalled in time, false for a null handle.
bool ForObject(HANDLE handle, unsigned long timeoutMs);
/// Waits as ForObject does, and dispatches messages meanwhile. See bss::sync::WSyncObject::LockEx. The handle
/// is read again in each round: the caller's variable may become null.
bool ForObjectOrInput(const HANDLE& handle, unsigned long timeoutMs, unsigned long wakeMask);

} // namespace bss::wait

#endif
