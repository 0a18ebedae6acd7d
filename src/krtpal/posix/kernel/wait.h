// Waits on one or several objects, and on the messages of the calling thread.

#ifndef KRTPAL_POSIX_KERNEL_WAIT_H
#define KRTPAL_POSIX_KERNEL_WAIT_H

#include "krtpal/posix/kernel/futex.h"
#include "krtpal/types.h"

namespace krtpal::posix {

/// What else can end a wait: input of the calling thread. The word changes before `HasArrived` turns true.
class InputSource {
public:
    virtual const FutexWord& Word() const = 0;
    virtual bool HasArrived() const = 0;

protected:
    ~InputSource() = default;
};

/// The result of WaitForMultipleObjects, for handles of which there are not too many. Input counts as one
/// more object behind the others.
DWORD WaitForHandles(const HANDLE* handles, std::size_t count, bool all, DWORD timeoutMs,
                     const InputSource* input);

} // namespace krtpal::posix

#endif
