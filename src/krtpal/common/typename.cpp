#include "krtpal/common/typename.h"

#include "krtpal/common/text.h"

#include <cstdlib>
#include <cxxabi.h>
#include <memory>

namespace krtpal {

std::wstring TypeName(const std::type_info& type) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
    return WidenText(name != nullptr ? name.get() : type.name());
}

} // namespace krtpal
