// Moved: see "bss/math/model/WPolynomialFunction.h". This path stays for sources that include it.

#ifndef BSS_MATH_WPOLYNOMIALFUNCTION_H
#define BSS_MATH_WPOLYNOMIALFUNCTION_H

#include "bss/math/model/WPolynomialFunction.h"

#endif
