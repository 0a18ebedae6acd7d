// Moved: see "bss/math/model/WExponentialFunction.h". This path stays for sources that include it.

#ifndef BSS_MATH_WEXPONENTIALFUNCTION_H
#define BSS_MATH_WEXPONENTIALFUNCTION_H

#include "bss/math/model/WExponentialFunction.h"

#endif
