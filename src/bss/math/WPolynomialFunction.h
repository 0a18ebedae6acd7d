// Forwards to "bss/math/model/WPolynomialFunction.h", which declares WPolynomialFunction.
//
// Kept for sources that include this path; new sources include the other one.

#ifndef BSS_MATH_WPOLYNOMIALFUNCTION_H
#define BSS_MATH_WPOLYNOMIALFUNCTION_H

#include "bss/math/model/WPolynomialFunction.h"

#endif
