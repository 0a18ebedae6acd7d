// The name of a type at run time, as the sources spell it.
//
//     krtpal::TypeName(typeid(object))      // L"bss::WGuid", L"app::Series<int>"
//
// Threads: may be called from any thread.

#ifndef KRTPAL_COMMON_TYPENAME_H
#define KRTPAL_COMMON_TYPENAME_H

#include "krtpal/export.h"

#include <string>
#include <typeinfo>

namespace krtpal {

/// With namespaces and template arguments. The compiler's own short form where it can't be spelled out.
KRTPAL_API std::wstring TypeName(const std::type_info& type);

} // namespace krtpal

#endif
