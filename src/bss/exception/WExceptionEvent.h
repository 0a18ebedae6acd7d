// WExceptionEvent: root of the events that can name their descriptor and log themselves.

#ifndef BSS_EXCEPTION_WEXCEPTIONEVENT_H
#define BSS_EXCEPTION_WEXCEPTIONEVENT_H

#include "bss/Export.h"

namespace bss {

class WExceptionEventInfo;
class WExceptionEventLog;

class KRTBSS_API WExceptionEvent {
public:
    virtual ~WExceptionEvent();

    /// The class's static descriptor; it lives as long as the module that defines the class.
    virtual const WExceptionEventInfo& GetEventInfo() const = 0;

    /// Writes the event to a log. The body that stands here does nothing.
    virtual void Log(WExceptionEventLog& log) const = 0;
};

} // namespace bss

#endif
