// The walk over all rows that tests their structure and their checksums.

#ifndef TOOLS_KRTSTORE_VERIFY_H
#define TOOLS_KRTSTORE_VERIFY_H

#include "Connection.h"

#include <ostream>

namespace krtstore {

struct Findings {
    std::size_t rows = 0;
    std::size_t faults = 0;
};

// A line to `output` for each fault: table, key, column, what is wrong; and one for each table that has rows
// whose checksums could not be tested. The bar goes to `terminal`, null for none. Tables that are none of the
// store's are passed over.
Findings Verify(Connection& connection, const std::vector<Table>& tables, std::ostream& output,
                std::ostream* terminal);

// Whether the standard error stream is a terminal.
bool HasTerminal();

} // namespace krtstore

#endif
