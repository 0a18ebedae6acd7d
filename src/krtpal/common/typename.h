// The name of a type at run time, as the sources spell it.
//
//     platform::TypeName(typeid(object))      // L"bss::WGuid", L"app::Series<int>"
//
// Threads: may be called from any thread.

#ifndef PLATFORM_TYPENAME_H
#define PLATFORM_TYPENAME_H

#include "platform/export.h"

#include <string>
#include <typeinfo>

namespace platform {

/// With namespaces and template arguments. The compiler's own short form where it can't be spelled out.
PLATFORM_API std::wstring TypeName(const std::type_info& type);

} // namespace platform

#endif
