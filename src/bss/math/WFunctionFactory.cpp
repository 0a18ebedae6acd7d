#include "bss/math/WFunctionFactory.h"

#include "bss/math/model/WBroadeningFunction.h"
#include "bss/math/model/WExponentialDecayFunction.h"
#include "bss/math/model/WExponentialFunction.h"
#include "bss/math/model/WExponentialPolynomialFunction.h"
#include "bss/math/model/WGaussianFunction.h"
#include "bss/math/model/WPolynomialFunction.h"

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
