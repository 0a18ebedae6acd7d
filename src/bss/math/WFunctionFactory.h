// WFunctionFactory: creates a function from its stored type number.
//
//     std::unique_ptr<bss::WFunction> function(bss::WFunctionFactory::GetFunction(storedType));
//     if (function) { function->SetCoefficients(storedCoefficients); }
//
// Threads: GetFunction has no state and may be called from any thread.

#ifndef BSS_MATH_WFUNCTIONFACTORY_H
#define BSS_MATH_WFUNCTIONFACTORY_H

#include "bss/math/WFunction.h"

namespace bss {

/// Creates functions by type number.
class KRTBSS_API WFunctionFactory {
public:
    /// Destroys the factory, which has no data.
    virtual ~WFunctionFactory();

    /// Returns a new function with all its coefficients 0.0, which the caller owns, for the types 1 to 6.
    /// Returns null for any other type and if memory is short. The types 7 to 11 are excluded for
    /// compatibility; their classes are created by their constructors only.
    static WFunction* GetFunction(WFunction::etype type);
};

} // namespace bss

#endif
