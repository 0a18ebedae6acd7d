#include "krtpal/guid.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <sys/random.h>

namespace krtpal {

HRESULT CoCreateGuid(GUID* id) {
    if (id == nullptr) {
        return E_POINTER;
    }
    GUID made;
    // The kernel returns up to 256 bytes in one piece.
    if (getrandom(&made, sizeof(made), 0) != static_cast<ssize_t>(sizeof(made))) {
        return E_FAIL;
    }
    made.Data3 = static_cast<USHORT>((made.Data3 & 0x0FFF) | 0x4000);
    made.Data4[0] = static_cast<UCHAR>((made.Data4[0] & 0x3F) | 0x80);
    *id = made;
    return S_OK;
}

int StringFromGUID2(REFGUID id, LPWSTR text, int count) {
    constexpr int kNeeded = 39;
    if (text == nullptr || count < kNeeded) {
        return 0;
    }
    const auto write = [&text](std::uint64_t number, int digits) {
        for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
            *text++ = L"0123456789ABCDEF"[number >> shift & 0xF];
        }
    };
    *text++ = L'{';
    write(id.Data1, 8);
    *text++ = L'-';
    write(id.Data2, 4);
    *text++ = L'-';
    write(id.Data3, 4);
    for (std::size_t i = 0; i < sizeof(id.Data4); ++i) {
        if (i == 0 || i == 2) {
            *text++ = L'-';
        }
        write(id.Data4[i], 2);
    }
    *text++ = L'}';
    *text = L'\0';
    return kNeeded;
}

int UuidCompare(UUID* a, UUID* b, RPC_STATUS* status) {
    static constexpr GUID kZeros{};
    if (status != nullptr) {
        *status = RPC_S_OK;
    }
    const GUID& left = a == nullptr ? kZeros : *a;
    const GUID& right = b == nullptr ? kZeros : *b;
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

} // namespace krtpal
