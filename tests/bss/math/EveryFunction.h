// One new object of every function class, with what is known of it.

#ifndef TESTS_BSS_MATH_EVERYFUNCTION_H
#define TESTS_BSS_MATH_EVERYFUNCTION_H

#include "bss/math/model/WBroadeningFunction.h"
#include "bss/math/model/WCumulantsFunction.h"
#include "bss/math/model/WExponentialDecayFunction.h"
#include "bss/math/model/WExponentialFunction.h"
#include "bss/math/model/WExponentialPolynomialFunction.h"
#include "bss/math/model/WFermiDiracFunction.h"
#include "bss/math/model/WGaussianCumulantsFunction.h"
#include "bss/math/model/WGaussianFunction.h"
#include "bss/math/model/WPolynomialFunction.h"
#include "bss/math/model/WSimpleExponentialDecayFunction.h"
#include "bss/math/model/WSineFunction.h"
#include "bss/math/model/WTriangleDitherFitFunction.h"

#include <memory>
#include <string>
#include <vector>

struct FunctionFacts {
    std::unique_ptr<bss::WFunction> function;
    int type;
    std::vector<std::wstring> names;
    bool covarianceOfZeros;
};

inline std::vector<FunctionFacts> EveryFunction() {
    using namespace bss;
    std::vector<FunctionFacts> all;
    const auto add = [&all](WFunction* function, int type, std::vector<std::wstring> names, bool zeros) {
        all.push_back({std::unique_ptr<WFunction>(function), type, std::move(names), zeros});
    };
    add(new WPolynomialFunction, 1, {}, false);
    add(new WGaussianFunction, 2, {L"amplitude", L"center", L"width", L"offset", L"slope"}, false);
    add(new WExponentialFunction, 3, {L"A0", L"A1", L"A2", L"A3"}, true);
    add(new WExponentialPolynomialFunction, 4, {}, false);
    add(new WBroadeningFunction, 5, {L"instrumental term", L"mixing term"}, false);
    add(new WExponentialDecayFunction, 6, {L"A0", L"A1", L"A2", L"A3"}, true);
    add(new WFermiDiracFunction, 7, {L"A0", L"A1", L"A2"}, false);
    add(new WCumulantsFunction, 8, {L"A0", L"A1", L"A2", L"A3"}, true);
    add(new WGaussianCumulantsFunction, 9, {L"A0", L"A1", L"A2", L"A3"}, true);
    add(new WSimpleExponentialDecayFunction, 10, {L"A0", L"A1", L"A2"}, true);
    add(new WSineFunction, 11, {L"A0", L"A1", L"omega", L"phi"}, false);
    add(new WTriangleDitherFitFunction(0.5, 8.0), 0, {L"offset", L"amplitude", L"bin width"}, false);
    return all;
}

#endif
