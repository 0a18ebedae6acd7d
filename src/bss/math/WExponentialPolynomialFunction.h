// Forwards to "bss/math/model/WExponentialPolynomialFunction.h", which declares
// WExponentialPolynomialFunction.
//
// Kept for sources that include this path; new sources include the other one.

#ifndef BSS_MATH_WEXPONENTIALPOLYNOMIALFUNCTION_H
#define BSS_MATH_WEXPONENTIALPOLYNOMIALFUNCTION_H

#include "bss/math/model/WExponentialPolynomialFunction.h"

#endif
