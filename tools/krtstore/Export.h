// Tables as one JSON document.

#ifndef TOOLS_KRTSTORE_EXPORT_H
#define TOOLS_KRTSTORE_EXPORT_H

#include "Connection.h"

#include <ostream>

namespace krtstore {

// Writes the document, which docs/krtstore.md describes, a row at a time.
void Export(Connection& connection, const std::vector<Table>& tables, std::ostream& output);

} // namespace krtstore

#endif
