// The name of a type at run time, as it is spelled in the source.
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

/// Returns the demangled name with namespaces and template arguments, equal on both systems. Returns the
/// compiler's mangled name if it can't be demangled.
KRTPAL_API std::wstring TypeName(const std::type_info& type);

} // namespace krtpal

#endif
