// Logs failures whose texts are outside ASCII to the default log. Sets no locale.
// Argument "unsynchronised": after std::ios::sync_with_stdio(false).

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/exception/WExceptionEventLog.h"

#include <cstdio>
#include <cstring>
#include <iostream>

int main(int argc, char** argv) {
    if (argc > 1 && std::strcmp(argv[1], "unsynchronised") == 0) {
        std::ios::sync_with_stdio(false);
    }
    std::wcout << L"before\n";
    const bss::WNEODBCError cause(L"Tabelle \u00bbGr\u00f6\u00dfe\u00ab \u2014 \u7c92\u5f84 \U0001F52C");
    bss::WNEDataIOError(L"\u00b5m", &cause).Log(bss::WExceptionEventLog::GetEventLog());
    std::wcout << L"after\n" << std::flush;
    return std::wcout.good() ? 0 : 1;
}
