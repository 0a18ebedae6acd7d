#include "platform/guid.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <sys/random.h>

namespace platform {

HRESULT CoCreateGuid(GUID* id) {
    if (id == nullptr) {
        return E_POINTER;
    }
    GUID made;
    // Up to 256 bytes come whole.
    if (getrandom(&made, sizeof(made), 0) != static_cast<ssize_t>(sizeof(made))) {
        return E_FAIL;
    }
    made.Data3 = static_cast<USHORT>((made.Data3 & 0x0FFF) | 0x4000);
    made.Data4[0] = static_cast<UCHAR>((made.Data4[0] & 0x3F) | 0x80);
    *id = made;
    return S_OK;
}

int StringFromGUID2(REFGUID id, LPWSTR text, int count) {
    constexpr int needed = 39;
    if (text == nullptr || count < needed) {
        return 0;
    }
    char narrow[needed];
    std::snprintf(narrow, sizeof(narrow), "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", id.Data1,
                  id.Data2, id.Data3, id.Data4[0], id.Data4[1], id.Data4[2], id.Data4[3], id.Data4[4],
                  id.Data4[5], id.Data4[6], id.Data4[7]);
    std::copy_n(narrow, needed, text);
    return needed;
}

int UuidCompare(UUID* a, UUID* b, RPC_STATUS* status) {
    static constexpr GUID zeros{};
    if (status != nullptr) {
        *status = RPC_S_OK;
    }
    const GUID& left = a == nullptr ? zeros : *a;
    const GUID& right = b == nullptr ? zeros : *b;
    const auto compare = [](auto x, auto y) { return x < y ? -1 : (y < x ? 1 : 0); };
    if (left.Data1 != right.Data1) {
        return compare(left.Data1, right.Data1);
    }
    if (left.Data2 != right.Data2) {
        return compare(left.Data2, right.Data2);
    }
    if (left.Data3 != right.Data3) {
        return compare(left.Data3, right.Data3);
    }
    return compare(std::memcmp(left.Data4, right.Data4, sizeof(left.Data4)), 0);
}

} // namespace platform
