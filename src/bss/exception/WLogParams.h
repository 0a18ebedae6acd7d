// WLogParams: the arguments of one event as text, and the event's descriptor.
//
//     WLogParams params;
//     params.SetEventInfo(&info);
//     params.FormatEventArgument(0, L"relay");
//     params.FormatEventArgument(1, 42L);
//     const wchar_t* text = params.GetFormatArg(1);   // "42"
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

/// Text arguments of one event. An argument is a text, which may be empty, or null if it is not set.
struct KRTBSS_API WLogParams {
    static const int ARGUMENT_COUNT; ///< 8, the number of inserts of any message template.

    /// Sets no descriptor and no argument.
    WLogParams() = default;
    /// Copies the descriptor's address and the texts. Throws std::bad_alloc if memory is short.
    WLogParams(const WLogParams&) = default;
    /// Copies the descriptor's address and the texts. Throws std::bad_alloc if memory is short.
    WLogParams& operator=(const WLogParams&) = default;
    /// Destroys the texts; the descriptor is borrowed.
    virtual ~WLogParams();

    /// Returns true if this descriptor was constructed earlier than the other one, by WSystemTimeEx's `<`.
    /// The times of the events are not compared, so events of one class are equivalent. Returns false if
    /// either object has no descriptor.
    virtual bool operator<(const WLogParams& other) const;

    /// Stores the descriptor, which is borrowed: the module that defines the event owns it.
    void SetEventInfo(const WExceptionEventInfo* info) { m_pEventInfo = info; }
    /// Returns the descriptor. REQUIRES: SetEventInfo has set one.
    const WExceptionEventInfo& GetEventInfo() const { return *m_pEventInfo; }

    /// Sets argument `i` to a copy of the text; null clears it. An index outside 0 to 7 is ignored. Throws
    /// std::bad_alloc if memory is short.
    void SetFormatArg(int i, const wchar_t* text);
    /// Returns the text of argument `i`, null if it is not set or if `i` is outside 0 to 7. The object owns
    /// the text, which is valid until the argument changes.
    const wchar_t* GetFormatArg(int i) const;

    // Each overload sets argument `i` to the text of a value. An index outside 0 to 7 is ignored. All throw
    // std::bad_alloc if memory is short.

    /// Sets the signed decimal number of the character's code, not the character.
    void FormatEventArgument(int i, char value);
    /// Sets the signed decimal number.
    void FormatEventArgument(int i, short value);
    /// Sets the signed decimal number.
    void FormatEventArgument(int i, int value);
    /// Sets the signed decimal number.
    void FormatEventArgument(int i, long value);
    /// Sets the unsigned decimal number.
    void FormatEventArgument(int i, unsigned char value);
    /// Sets the unsigned decimal number.
    void FormatEventArgument(int i, unsigned short value);
    /// Sets the unsigned decimal number.
    void FormatEventArgument(int i, unsigned int value);
    /// Sets the unsigned decimal number.
    void FormatEventArgument(int i, unsigned long value);
    /// Sets the hexadecimal number in lower case with prefix "0x"; a negative value as its two's complement.
    void FormatEventArgument(int i, LONGLONG value);
    /// Sets up to 7 significant digits, as VariantChangeType formats VT_R4; clears the argument if that
    /// fails.
    void FormatEventArgument(int i, float value);
    /// Sets up to 15 significant digits, as VariantChangeType formats VT_R8; clears the argument if that
    /// fails.
    void FormatEventArgument(int i, double value);
    /// Sets a copy of the text; null clears the argument.
    void FormatEventArgument(int i, const wchar_t* text);
    /// Sets a copy of the text.
    void FormatEventArgument(int i, const std::wstring& text);
    /// Sets the text, converted from the current code page (UTF-8 on Linux).
    void FormatEventArgument(int i, const std::string& text);

    const WExceptionEventInfo* m_pEventInfo = nullptr; ///< The borrowed descriptor, null if none is set.
    std::array<CountedText, 8> m_args;                 ///< The owned arguments, each null if not set.

private:
    void SetArgument(int i, CountedText text);
};

} // namespace bss

#endif
