// A PostgreSQL server of the tests' own, as the data source "krtbss-postgresql".
//
//     if (PostgresqlState() != "ready") ...        // "missing: ..." or "failed: ...", and why
//
// On Linux it starts with the first question and stops with the process, in whichever way that ends. A
// Windows program is run by the script that starts it.

#ifndef TESTS_SUPPORT_ODBC_POSTGRESQL_H
#define TESTS_SUPPORT_ODBC_POSTGRESQL_H

#include <string>

#ifdef _WIN32

#include <cstdlib>

inline const std::string& PostgresqlState() {
    static const char* const given = std::getenv("KRTBSS_TEST_POSTGRESQL");
    static const std::string state =
        given != nullptr ? given : "missing: not run by tests/support/postgresql";
    return state;
}

#else

#include "support/ChildProcess.h"
#include "support/odbc/OdbcFolder.h"

inline const std::string& PostgresqlState() {
    struct Server {
        ~Server() {
            process.CloseInput();
            process.Wait();
        }
        ChildProcess process{KRTBSS_SOURCE_DIR "/tests/support/postgresql",
                             {OdbcFolder().string(), KRTBSS_POSTGRESQL_ODBC}};
        std::string state = process.ReadLine();
    };
    static const Server server;
    return server.state;
}

#endif

#endif
