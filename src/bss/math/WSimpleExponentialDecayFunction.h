// Forwards to "bss/math/model/WSimpleExponentialDecayFunction.h", which declares
// WSimpleExponentialDecayFunction.
//
// Kept for sources that include this path; new sources include the other one.

#ifndef BSS_MATH_WSIMPLEEXPONENTIALDECAYFUNCTION_H
#define BSS_MATH_WSIMPLEEXPONENTIALDECAYFUNCTION_H

#include "bss/math/model/WSimpleExponentialDecayFunction.h"

#endif
