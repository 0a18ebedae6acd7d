// Throws a failure, gives it meaning on its way up, and logs the chain.

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/exception/WFileEventLog.h"

#include <iostream>
#include <string>

namespace {

void ReadSector(long number) {
    throw bss::WNESerializerError(L"sector " + std::to_wstring(number) + L" is damaged");
}

// A layer that knows more throws its own class, with the cause as next link.
void ReadRun(const std::wstring& name) {
    try {
        ReadSector(7);
    } catch (const bss::WNestedException& cause) {
        throw bss::WNEDataIOError(L"while reading run " + name, &cause);
    }
}

void CloseShutter() {
    throw bss::WNEUnexpectedException(L"the shutter does not answer");
}

// A failure of the clean-up is appended to the one that is on its way.
void Measure() {
    try {
        ReadRun(L"toluene 3");
    } catch (bss::WNestedException& failure) {
        try {
            CloseShutter();
        } catch (const bss::WNestedException& later) {
            failure += later;
        }
        throw;
    }
}

} // namespace

int main() {
    bss::WFileEventLog log(std::wcout, L"exceptions");
    try {
        Measure();
    } catch (const bss::WNEDataIOError& failure) { // by its class, as any exception
        failure.Log(log);
        std::wcout << L"For the user: " << failure.AsString(true);
        int links = 0;
        for (const bss::WNestedException* link = &failure; link != nullptr; link = link->GetNextException()) {
            ++links;
        }
        std::wcout << links << L" links, highest severity "
                   << (failure.GetHighestSeverity() == bss::MAJOR ? L"MAJOR" : L"another one") << std::endl;
    }
}
