// Forwards to "bss/math/model/WExponentialFunction.h", which declares WExponentialFunction.
//
// Kept for sources that include this path; new sources include the other one.

#ifndef BSS_MATH_WEXPONENTIALFUNCTION_H
#define BSS_MATH_WEXPONENTIALFUNCTION_H

#include "bss/math/model/WExponentialFunction.h"

#endif
