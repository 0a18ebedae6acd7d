#include "bss/math/WFunctionFactory.h"

#include "bss/math/WBroadeningFunction.h"
#include "bss/math/WExponentialDecayFunction.h"
#include "bss/math/WExponentialFunction.h"
#include "bss/math/WExponentialPolynomialFunction.h"
#include "bss/math/WGaussianFunction.h"
#include "bss/math/WPolynomialFunction.h"

#include <new>

namespace bss {

WFunctionFactory::~WFunctionFactory() = default;

WFunction* WFunctionFactory::GetFunction(WFunction::etype type) {
    try {
        switch (type) {
        case WFunction::etPolynomial:
            return new WPolynomialFunction;
        case WFunction::etGaussian:
            return new WGaussianFunction;
        case WFunction::etExponential:
            return new WExponentialFunction;
        case WFunction::etExponentialPolynomial:
            return new WExponentialPolynomialFunction;
        case WFunction::etBroadening:
            return new WBroadeningFunction;
        case WFunction::etExponentialDecay:
            return new WExponentialDecayFunction;
        default:
            return nullptr;
        }
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace bss
