// WGuid: a globally unique identifier with its text forms. GuidLessThan: an order for containers of GUID.
//
//     bss::WGuid fresh(bss::WGuid::GetNext());
//     std::wstring text = fresh.GetAsText();              // {0F5B3E1C-....}, upper case
//     bss::WGuid same(text.c_str());
//
// Text is parsed by its groups: hexadecimal digits between hyphens, with or without braces. A missing group
// is 0. A group keeps as many low digits as its field holds, and ends at the first character that is not a
// digit; the characters from there to the next hyphen are ignored. No text is rejected. Null text gives a new
// identifier.
//
// Do not mix operator< and GuidLessThan in one container: GuidLessThan is the system's order.
//
// Threads: objects are values.

#ifndef BSS_SYSTEM_WGUID_H
#define BSS_SYSTEM_WGUID_H

#include "bss/Export.h"
#include "krtpal/guid.h"

#include <string>
#include <vector>

namespace bss {

/// An identifier of 128 bits.
class KRTBSS_API WGuid {
public:
    /// Copies the identifier.
    WGuid(const GUID& guid);
    WGuid(const WGuid& other);
    /// Copies `*other`. Null gives a new identifier.
    WGuid(const WGuid* other);
    /// Parses the text. See GetGuid(const wchar_t*).
    WGuid(const wchar_t* text);
    virtual ~WGuid();
    /// Copies the identifier.
    WGuid& operator=(const GUID& guid);
    WGuid& operator=(const WGuid& other);

    /// Returns true if all parts are equal.
    virtual bool operator==(const WGuid& other) const;
    /// See operator==.
    virtual bool operator!=(const WGuid& other) const;
    /// Compares Data1, Data2, Data3 and the bytes of Data4, in this order, all unsigned.
    virtual bool operator<(const WGuid& other) const;
    /// See operator<.
    virtual bool operator>(const WGuid& other) const;

    /// Returns the identifier.
    operator GUID() const { return m_guid; }
    /// Returns the identifier.
    GUID GetGuid() const { return m_guid; }
    /// Returns the identifier of a text, by the rules at the top of this header. Null gives a new identifier.
    static WGuid GetGuid(const wchar_t* text);
    /// Sets the identifier.
    void SetGuid(const GUID& guid);
    /// Sets the identifier to that of a text. See GetGuid(const wchar_t*).
    void SetGuid(const wchar_t* text);

    /// Returns the text of 38 characters: braces, hyphens, upper-case digits.
    std::wstring GetAsText() const;
    /// Returns the text of `guid`. See GetAsText().
    static std::wstring GetAsText(const GUID& guid);
    /// Sets `text` to the text of `guid`. See GetAsText().
    static void GetAsText(const GUID& guid, std::wstring& text);

    /// Returns a new identifier; all zeros if the system can't make one.
    static GUID GetNext();
    /// See GetNext.
    static GUID GetNextGuid();
    /// Replaces `guids` by `count` new identifiers. See GetNext.
    static void GetNextGuids(unsigned int count, std::vector<GUID>& guids);

protected:
    /// Sets the identifier. Null gives a new one.
    void Init(const GUID* guid);
    /// Sets the identifier. Null gives a new one.
    void Init(const WGuid* other);

private:
    GUID m_guid;
};

/// Orders identifiers as the system's UuidCompare does.
struct KRTBSS_API GuidLessThan {
    /// Returns true if `a` is less than `b`.
    bool operator()(const GUID& a, const GUID& b) const;
};

} // namespace bss

#endif
