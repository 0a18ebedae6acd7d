// The library's own module. On Linux a module handle is what dlopen answers for the shared object.

#ifndef BSS_MODULE_H
#define BSS_MODULE_H

#include "bss/Export.h"
#include "krtpal/module.h"

/// The handle of this library's module, from load to unload; null outside. Exported by plain name: it is what
/// other modules export, too, to be listed with their versions.
extern "C" KRTBSS_API krtpal::HINSTANCE GetVersionInfoModuleHandle();

namespace bss {

/// The same handle.
KRTBSS_API HINSTANCE GetBSSHandle();

} // namespace bss

#endif
