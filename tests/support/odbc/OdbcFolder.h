// Where the driver manager finds the drivers of the tests, whatever the machine has in its own lists.
//
//     OdbcFolder();                                // before the first ODBC call of the process
//
// Drivers "SQLite3", "SQLite3 ODBC Driver" and "Microsoft Access Driver (*.mdb)", data sources "krtbss-test"
// and, while its server runs (Postgresql.h), "krtbss-postgresql". Child processes inherit all of it.

#ifndef TESTS_SUPPORT_ODBC_ODBCFOLDER_H
#define TESTS_SUPPORT_ODBC_ODBCFOLDER_H

#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

/// A folder of this process for what its drivers keep; goes at the end.
inline const std::filesystem::path& OdbcFolder() {
    struct Folder {
        Folder() : path(std::filesystem::path(KRTBSS_TEST_ODBC_ROOT) / std::to_string(getpid())) {
            std::filesystem::remove_all(path);
            std::filesystem::create_directories(path);
            setenv("ODBCSYSINI", KRTBSS_TEST_ODBC_ROOT, 1);
            setenv("ODBCINI", (path / "odbc.ini").c_str(), 1);
        }
        ~Folder() {
            std::error_code ignored;
            std::filesystem::remove_all(path, ignored);
        }
        std::filesystem::path path;
    };
    static const Folder folder;
    return folder.path;
}

#endif
