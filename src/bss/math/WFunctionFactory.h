// WFunctionFactory: from a stored type number back to a function.
//
//     std::unique_ptr<bss::WFunction> function(bss::WFunctionFactory::GetFunction(storedType));
//     if (function) { function->SetCoefficients(storedCoefficients); }
//
// Threads: GetFunction keeps no state and is safe from any thread.

#ifndef BSS_MATH_WFUNCTIONFACTORY_H
#define BSS_MATH_WFUNCTIONFACTORY_H

#include "bss/math/WFunction.h"

namespace bss {

class KRTBSS_API WFunctionFactory {
public:
    virtual ~WFunctionFactory();

    /// A new function with all its coefficients 0.0, which the caller owns, for the types 1 to 6; null for 0,
    /// for memory that ran out, and for every type above 6: the factory stops there on purpose, and the later
    /// classes are made by their constructors only.
    static WFunction* GetFunction(WFunction::etype type);
};

} // namespace bss

#endif
