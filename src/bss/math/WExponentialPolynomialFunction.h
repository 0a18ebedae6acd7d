// Moved: see "bss/math/model/WExponentialPolynomialFunction.h". This path stays for sources that include it.

#ifndef BSS_MATH_WEXPONENTIALPOLYNOMIALFUNCTION_H
#define BSS_MATH_WEXPONENTIALPOLYNOMIALFUNCTION_H

#include "bss/math/model/WExponentialPolynomialFunction.h"

#endif
