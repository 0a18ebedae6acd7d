#include "bss/thread/private/Wait.h"

#include "krtpal/message.h"
#include "krtpal/sync.h"

namespace bss::wait {

DWORD TimeOut(unsigned long timeoutMs) {
    return timeoutMs >= INFINITE ? INFINITE : static_cast<DWORD>(timeoutMs);
}

bool ForObject(HANDLE handle, unsigned long timeoutMs) {
    return handle != nullptr && WaitForSingleObject(handle, TimeOut(timeoutMs)) == WAIT_OBJECT_0;
}

bool ForObjectOrInput(const HANDLE& handle, unsigned long timeoutMs, unsigned long wakeMask) {
    while (handle != nullptr) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (message.message == WM_QUIT) {
                return true; // although the object was not signalled (kept for compatibility)
            }
            DispatchMessageW(&message);
        }
        // Each round waits the whole time-out again (kept for compatibility).
        switch (
            MsgWaitForMultipleObjects(1, &handle, FALSE, TimeOut(timeoutMs), static_cast<DWORD>(wakeMask))) {
        case WAIT_OBJECT_0:
            return true;
        case WAIT_FAILED:
        case WAIT_TIMEOUT:
        case WAIT_ABANDONED:
            return false;
        default: // input arrived
            break;
        }
    }
    return false;
}

} // namespace bss::wait
