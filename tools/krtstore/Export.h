// Tables as one JSON document.

#ifndef TOOLS_KRTSTORE_EXPORT_H
#define TOOLS_KRTSTORE_EXPORT_H

#include "Connection.h"

#include <functional>
#include <ostream>
#include <string>

namespace krtstore {

// Writes the document, which docs/krtstore.md describes, a row at a time.
void Export(Connection& connection, const std::vector<Table>& tables, std::ostream& output);

// Lets `write` fill a file that appears, or replaces the one that is there, when it is whole. Throws Failure
// if it can't be written; what `write` throws passes. Then nothing is left behind.
void WriteWhole(const std::string& file, const std::function<void(std::ostream&)>& write);

} // namespace krtstore

#endif
