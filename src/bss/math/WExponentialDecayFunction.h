// Forwards to "bss/math/model/WExponentialDecayFunction.h", which declares WExponentialDecayFunction.
//
// Kept for sources that include this path; new sources include the other one.

#ifndef BSS_MATH_WEXPONENTIALDECAYFUNCTION_H
#define BSS_MATH_WEXPONENTIALDECAYFUNCTION_H

#include "bss/math/model/WExponentialDecayFunction.h"

#endif
