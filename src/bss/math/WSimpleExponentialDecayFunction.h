// Moved: see "bss/math/model/WSimpleExponentialDecayFunction.h". This path stays for sources that include it.

#ifndef BSS_MATH_WSIMPLEEXPONENTIALDECAYFUNCTION_H
#define BSS_MATH_WSIMPLEEXPONENTIALDECAYFUNCTION_H

#include "bss/math/model/WSimpleExponentialDecayFunction.h"

#endif
