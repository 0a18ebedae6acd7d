// The modules of the calling process, as the dynamic linker lists them.

#ifndef KRTPAL_POSIX_MODULE_MODULELIST_H
#define KRTPAL_POSIX_MODULE_MODULELIST_H

#include "krtpal/types.h"

#include <string>
#include <vector>

namespace krtpal::posix {

struct ListedModule {
    HMODULE handle;
    std::string file; ///< absolute path; empty for a module without a file
};

/// Returns the modules in the linker's order, the program first.
std::vector<ListedModule> ListModules();

} // namespace krtpal::posix

#endif
