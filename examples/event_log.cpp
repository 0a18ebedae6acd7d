// A failure of one's own, and a log that keeps its lines in memory.

#include "bss/exception/WCatalogueException.h"
#include "bss/exception/WExceptionEventLog.h"
#include "bss/exception/WFileEventLog.h"
#include "bss/exception/WLogParams.h"

#include <iostream>
#include <sstream>
#include <string>
#include <vector>

// Number and text are the arguments of the message's inserts.
BSS_EXCEPTION_CLASS(, WNELaserOff, 20001, L"Laser %1 is off: %2.", bss::MAJOR, long, std::wstring)
WNELaserOff::~WNELaserOff() = default; // puts the descriptor into the list of events

namespace {

// Counts the entries, and hands them on to the form that all logs have.
class MemoryLog : public bss::WExceptionEventLog {
public:
    bool Log(const std::vector<const bss::WLogParams*>& params) override {
        m_nEntries += params.size();
        bss::WFileEventLog form(m_Text, L"laser");
        return form.Log(params);
    }

    std::size_t Entries() const { return m_nEntries; }
    std::wstring Text() const { return m_Text.str(); }

private:
    std::size_t m_nEntries = 0;
    std::wostringstream m_Text;
};

void SwitchOn(long laser) {
    if (laser > 1) {
        const WNELaserOff cause(laser - 1, L"the interlock is open");
        throw WNELaserOff(laser, L"it follows the first one", &cause);
    }
}

} // namespace

int main() {
    MemoryLog log;
    try {
        SwitchOn(1);
        SwitchOn(2);
    } catch (const WNELaserOff& failure) {
        failure.Log(log);
        std::wcout << L"laser number " << failure.GetArgument<0>() << L"\n"; // as it was thrown, typed
    }
    std::wcout << log.Entries() << L" entries:\n" << log.Text() << std::flush;
}
