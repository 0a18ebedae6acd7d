// Waits for objects and for messages of the calling thread.

#ifndef KRTPAL_POSIX_KERNEL_WAIT_H
#define KRTPAL_POSIX_KERNEL_WAIT_H

#include "krtpal/posix/kernel/futex.h"
#include "krtpal/types.h"

namespace krtpal::posix {

/// Input of the calling thread, which also ends a wait. The word changes before HasArrived becomes true.
class InputSource {
public:
    virtual const FutexWord& Word() const = 0;
    virtual bool HasArrived() const = 0;

protected:
    ~InputSource() = default;
};

/// Returns the result of WaitForMultipleObjects. Input has the index after the last object. Sets the last
/// error on WAIT_FAILED.
/// REQUIRES: at most MAXIMUM_WAIT_OBJECTS handles.
DWORD WaitForHandles(const HANDLE* handles, std::size_t count, bool all, DWORD timeoutMs,
                     const InputSource* input);

} // namespace krtpal::posix

#endif
