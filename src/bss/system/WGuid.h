// WGuid: a globally unique identifier with its text forms; GuidLessThan: an order for containers of GUID.
//
//     bss::WGuid fresh(bss::WGuid::GetNext());
//     std::wstring text = fresh.GetAsText();              // {0F5B3E1C-....}, upper case
//     bss::WGuid same(text.c_str());
//
// Text that is read is taken by its groups: hexadecimal digits between hyphens, with or without braces. What
// is missing is 0; a group keeps as many low digits as its field holds; a group ends at the first character
// that is no digit. No text fails or is read beyond its end; null text stands for a fresh identifier.
//
// The orders of operator< and of GuidLessThan are not to be mixed in one container: the second is the
// system's.
//
// Threads: objects are values.

#ifndef BSS_SYSTEM_WGUID_H
#define BSS_SYSTEM_WGUID_H

#include "bss/Export.h"
#include "krtpal/guid.h"

#include <string>
#include <vector>

namespace bss {

class KRTBSS_API WGuid {
public:
    WGuid(const GUID& guid);
    WGuid(const WGuid& other);
    /// A null pointer gives a fresh identifier, as null text does.
    WGuid(const WGuid* other);
    WGuid(const wchar_t* text);
    virtual ~WGuid();
    WGuid& operator=(const GUID& guid);
    WGuid& operator=(const WGuid& other);

    virtual bool operator==(const WGuid& other) const;
    virtual bool operator!=(const WGuid& other) const;
    /// By Data1, Data2, Data3 and the bytes of Data4, without sign.
    virtual bool operator<(const WGuid& other) const;
    virtual bool operator>(const WGuid& other) const;

    operator GUID() const { return m_guid; }
    GUID GetGuid() const { return m_guid; }
    static WGuid GetGuid(const wchar_t* text);
    void SetGuid(const GUID& guid);
    void SetGuid(const wchar_t* text);

    /// Braces, upper case, hyphens: 38 characters.
    std::wstring GetAsText() const;
    static std::wstring GetAsText(const GUID& guid);
    static void GetAsText(const GUID& guid, std::wstring& text);

    /// New identifiers; all zeros if the system has none to give.
    static GUID GetNext();
    static GUID GetNextGuid();
    static void GetNextGuids(unsigned int count, std::vector<GUID>& guids);

protected:
    void Init(const GUID* guid);
    void Init(const WGuid* other);

private:
    GUID m_guid;
};

/// The order of the system's UuidCompare.
struct KRTBSS_API GuidLessThan {
    bool operator()(const GUID& a, const GUID& b) const;
};

} // namespace bss

#endif
