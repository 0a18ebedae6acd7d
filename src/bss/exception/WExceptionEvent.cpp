#include "bss/exception/WExceptionEvent.h"

namespace bss {

WExceptionEvent::~WExceptionEvent() = default;

void WExceptionEvent::Log(WExceptionEventLog& /*log*/) const {}

} // namespace bss
