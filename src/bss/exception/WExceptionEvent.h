// WExceptionEvent: abstract root of the events that have a static descriptor and can log themselves.
//
//     void Report(const bss::WExceptionEvent& event) {
//         std::wcout << event.GetEventInfo().GetName() << L'\n';
//         event.Log(bss::WExceptionEventLog::GetEventLog());
//     }
//
// WNestedException is the library's only direct derivative; applications derive from that class.
//
// Threads: one object, one thread at a time.

#ifndef BSS_EXCEPTION_WEXCEPTIONEVENT_H
#define BSS_EXCEPTION_WEXCEPTIONEVENT_H

#include "bss/Export.h"

namespace bss {

class WExceptionEventInfo;
class WExceptionEventLog;

/// An event with a static descriptor.
class KRTBSS_API WExceptionEvent {
public:
    /// Destroys the event.
    virtual ~WExceptionEvent();

    /// Returns the class's static descriptor, which lives as long as the module that defines the class.
    virtual const WExceptionEventInfo& GetEventInfo() const = 0;

    /// Writes the event to a log. Pure, with a body that does nothing.
    virtual void Log(WExceptionEventLog& log) const = 0;
};

} // namespace bss

#endif
