// The handle of the library's own module. On Linux a module handle is the result of dlopen for the shared
// object.
//
//     const bss::WVersionResource resource(bss::GetBSSHandle());
//
// Threads: both functions may be used from any thread.

#ifndef BSS_MODULE_H
#define BSS_MODULE_H

#include "bss/Export.h"
#include "krtpal/module.h"

/// Returns the handle of this library's module; null before it is loaded and after it is unloaded. Exported
/// by its plain name: WVersionInfo::AddProcessVersionInfo lists each module that exports this function.
extern "C" KRTBSS_API krtpal::HINSTANCE GetVersionInfoModuleHandle();

namespace bss {

/// See GetVersionInfoModuleHandle.
KRTBSS_API HINSTANCE GetBSSHandle();

} // namespace bss

#endif
