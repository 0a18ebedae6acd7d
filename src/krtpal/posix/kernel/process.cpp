#include "krtpal/process.h"

#include <unistd.h>

namespace krtpal {

HANDLE GetCurrentProcess() {
    return reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1));
}

HANDLE GetCurrentThread() {
    return reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-2));
}

DWORD GetCurrentProcessId() {
    return static_cast<DWORD>(getpid());
}

} // namespace krtpal
