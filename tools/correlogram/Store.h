// Analyses in a database: one persistent object each, with one component a fitted function.
//
//     Store store(options);                     // a file, or a data source
//     const long number = store.Add(analysis);
//     const Analysis same = store.Get(number);
//
// The tables are StoredAnalysis and StoredFit; docs/database-format.md tells how members lie in them.

#ifndef TOOLS_CORRELOGRAM_STORE_H
#define TOOLS_CORRELOGRAM_STORE_H

#include "Analysis.h"
#include "Options.h"

#include "bss/serial/database/WDatabase.h"

#include <string>

namespace correlogram {

class Store {
public:
    // Connects. A file is made by Add only: to list or show it has to be there. Throws tools::Failure, as all
    // operations do.
    explicit Store(const Options& options);

    // The number of the new analysis, one more than the highest there is.
    long Add(const Analysis& analysis);
    // A line for each analysis: number, time (UTC), file, points.
    std::string List();
    // As it was stored; a failed fit has its failure's text only, and no fit has its function.
    Analysis Get(long number);

private:
    std::string m_sName;
    bss::WDatabase m_Database;
};

} // namespace correlogram

#endif
