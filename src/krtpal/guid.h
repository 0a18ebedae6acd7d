// Globally unique identifiers.
//
//     GUID id;
//     if (SUCCEEDED(CoCreateGuid(&id))) {
//         wchar_t text[39];
//         StringFromGUID2(id, text, 39);       // {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}
//     }
//
// Threads: all calls may be used from any thread.

#ifndef KRTPAL_GUID_H
#define KRTPAL_GUID_H

#include "krtpal/export.h"
#include "krtpal/types.h"

#ifdef _WIN32
#include <objbase.h>
#include <rpc.h>
#else

namespace krtpal {

/// A 128-bit identifier in the binary layout of Windows. In memory the first three members have the byte
/// order of the processor.
struct GUID {
    ULONG Data1;
    USHORT Data2;
    USHORT Data3;
    UCHAR Data4[8];
};
using UUID = GUID;
/// GUID by reference; UUID is another name of the type.
using REFGUID = const GUID&;
/// Status of UuidCompare, always RPC_S_OK.
using RPC_STATUS = LONG;

inline constexpr RPC_STATUS RPC_S_OK = 0;

/// Returns whether all 16 bytes are equal.
inline bool operator==(const GUID& a, const GUID& b) {
    return __builtin_memcmp(&a, &b, sizeof(GUID)) == 0;
}
/// Returns whether any byte differs.
inline bool operator!=(const GUID& a, const GUID& b) {
    return !(a == b);
}

/// Returns S_OK and stores a random identifier (RFC 4122, version 4).
/// Fails with E_POINTER for null, E_FAIL if the system has no random numbers.
KRTPAL_API HRESULT WINAPI CoCreateGuid(GUID* id);
/// Returns 39 and stores the identifier in braces, in upper case, with a NUL.
/// Fails with 0 for a null text or if `count` characters are fewer than 39.
KRTPAL_API int WINAPI StringFromGUID2(REFGUID id, LPWSTR text, int count);
/// Returns -1, 0 or 1 by Data1, Data2, Data3 and the bytes of Data4, all unsigned. Null means the identifier
/// of zeros. `*status`, unless it is null, is set to RPC_S_OK.
KRTPAL_API int WINAPI UuidCompare(UUID* a, UUID* b, RPC_STATUS* status);

} // namespace krtpal

#define KRTPAL_NAMES                                                                                         \
    using krtpal::GUID, krtpal::UUID, krtpal::REFGUID, krtpal::RPC_STATUS, krtpal::RPC_S_OK,                 \
        krtpal::CoCreateGuid, krtpal::StringFromGUID2, krtpal::UuidCompare
namespace bss {
KRTPAL_NAMES;
}
namespace hss {
KRTPAL_NAMES;
}
#undef KRTPAL_NAMES
#endif

namespace krtpal {
static_assert(sizeof(GUID) == 16);
}

#endif
