// Moved: see "bss/math/model/WExponentialDecayFunction.h". This path stays for sources that include it.

#ifndef BSS_MATH_WEXPONENTIALDECAYFUNCTION_H
#define BSS_MATH_WEXPONENTIALDECAYFUNCTION_H

#include "bss/math/model/WExponentialDecayFunction.h"

#endif
