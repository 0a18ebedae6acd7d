// What is printed for people: the list of tables, and rows in full.

#ifndef TOOLS_KRTSTORE_INSPECT_H
#define TOOLS_KRTSTORE_INSPECT_H

#include "Connection.h"

#include <ostream>

namespace krtstore {

// A line for each table.
void List(Connection& connection, std::ostream& output);

// A block of lines for each row, one line a column. Throws tools::Failure if there is no row of that key.
void Show(Connection& connection, const Table& table, const Connection::Key& key, std::ostream& output);

} // namespace krtstore

#endif
