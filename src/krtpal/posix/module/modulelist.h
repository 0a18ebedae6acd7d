// The modules of the calling process, as the dynamic linker lists them.

#ifndef PLATFORM_POSIX_MODULELIST_H
#define PLATFORM_POSIX_MODULELIST_H

#include "platform/types.h"

#include <string>
#include <vector>

namespace platform::posix {

struct ListedModule {
    HMODULE handle;
    std::string file; ///< absolute; empty for what has no file
};

/// In the linker's order, the program first.
std::vector<ListedModule> ListModules();

} // namespace platform::posix

#endif
