// Moved: see "bss/math/model/WLinearFunction.h". This path stays for sources that include it.

#ifndef BSS_MATH_WLINEARFUNCTION_H
#define BSS_MATH_WLINEARFUNCTION_H

#include "bss/math/model/WLinearFunction.h"

#endif
