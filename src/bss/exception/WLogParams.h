// WLogParams: the arguments of one event as text, with the event's descriptor.
//
//     WLogParams params;
//     params.SetEventInfo(&info);
//     params.FormatEventArgument(0, L"relay");
//     params.FormatEventArgument(1, 42L);
//
// Threads: no locks; one object, one thread at a time.

#ifndef BSS_EXCEPTION_WLOGPARAMS_H
#define BSS_EXCEPTION_WLOGPARAMS_H

#include "bss/Export.h"
#include "bss/exception/CountedText.h"
#include "krtpal/types.h"

#include <array>
#include <string>

namespace bss {

class WExceptionEventInfo;

struct KRTBSS_API WLogParams {
    static const int ARGUMENT_COUNT; ///< 8, the number of inserts of any message template

    WLogParams() = default;
    WLogParams(const WLogParams&) = default;
    WLogParams& operator=(const WLogParams&) = default;
    virtual ~WLogParams();

    /// Orders by the time at which the descriptors were built, not by the events' times: all events of one
    /// class compare alike. False where either has no descriptor.
    virtual bool operator<(const WLogParams& other) const;

    /// The descriptor is borrowed: it lives in the module that defines the event.
    void SetEventInfo(const WExceptionEventInfo* info) { m_pEventInfo = info; }
    /// Must not be called before a descriptor is set.
    const WExceptionEventInfo& GetEventInfo() const { return *m_pEventInfo; }

    /// Sets argument `i` (0 to 7; any other index is ignored) to a copy of the text; null clears it.
    void SetFormatArg(int i, const wchar_t* text);
    /// The text of argument `i`, null if it has none or `i` is outside 0 to 7. It stays this object's.
    const wchar_t* GetFormatArg(int i) const;

    /// Sets argument `i` to the text of a value.
    /// - Whole numbers up to `long`: decimal.
    /// - `LONGLONG`: hexadecimal, lower case, with prefix "0x", whatever the sign.
    /// - `float`, `double`: 7 and 15 significant digits, as VariantChangeType gives them.
    /// - Text: a copy; narrow text is in the current code page (UTF-8 on Linux).
    /// Throws std::bad_alloc if memory is short.
    void FormatEventArgument(int i, char value);
    void FormatEventArgument(int i, short value);
    void FormatEventArgument(int i, int value);
    void FormatEventArgument(int i, long value);
    void FormatEventArgument(int i, unsigned char value);
    void FormatEventArgument(int i, unsigned short value);
    void FormatEventArgument(int i, unsigned int value);
    void FormatEventArgument(int i, unsigned long value);
    void FormatEventArgument(int i, LONGLONG value);
    void FormatEventArgument(int i, float value);
    void FormatEventArgument(int i, double value);
    void FormatEventArgument(int i, const wchar_t* text);
    void FormatEventArgument(int i, const std::wstring& text);
    void FormatEventArgument(int i, const std::string& text);

    const WExceptionEventInfo* m_pEventInfo = nullptr;
    std::array<CountedText, 8> m_args;

private:
    void SetArgument(int i, CountedText text);
};

} // namespace bss

#endif
