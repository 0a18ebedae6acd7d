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
    std::string name; // as in math_golden.txt
    std::unique_ptr<bss::WFunction> function;
    int type;
    bool covarianceOfZeros;
    std::vector<std::wstring> names;
};

inline std::vector<FunctionFacts> EveryFunction() {
    using namespace bss;
    std::vector<FunctionFacts> all;
    const auto add = [&all](const char* name, WFunction* function, int type, bool zeros,
                            std::vector<std::wstring> names) {
        all.push_back({name, std::unique_ptr<WFunction>(function), type, zeros, std::move(names)});
    };
    const std::vector<std::wstring> four{L"A0", L"A1", L"A2", L"A3"};
    const std::vector<std::wstring> three{L"A0", L"A1", L"A2"};
    add("polynomial", new WPolynomialFunction, 1, false, {});
    add("gaussian", new WGaussianFunction, 2, false,
        {L"amplitude", L"center", L"width", L"offset", L"slope"});
    add("exponential", new WExponentialFunction, 3, true, four);
    add("exponential_polynomial", new WExponentialPolynomialFunction, 4, false, {});
    add("broadening", new WBroadeningFunction, 5, false, {L"instrumental term", L"mixing term"});
    add("exponential_decay", new WExponentialDecayFunction, 6, true, four);
    add("fermi_dirac", new WFermiDiracFunction, 7, false, three);
    add("cumulants", new WCumulantsFunction, 8, true, four);
    add("gaussian_cumulants", new WGaussianCumulantsFunction, 9, true, four);
    add("simple_exponential_decay", new WSimpleExponentialDecayFunction, 10, true, three);
    add("sine", new WSineFunction, 11, false, {L"A0", L"A1", L"omega", L"phi"});
    add("triangle_dither", new WTriangleDitherFitFunction(0.5, 8.0), 0, false,
        {L"offset", L"amplitude", L"bin width"});
    return all;
}

#endif
