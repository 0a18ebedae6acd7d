// Forwards to "bss/math/model/WLinearFunction.h", which declares WLinearFunction.
//
// Kept for sources that include this path; new sources include the other one.

#ifndef BSS_MATH_WLINEARFUNCTION_H
#define BSS_MATH_WLINEARFUNCTION_H

#include "bss/math/model/WLinearFunction.h"

#endif
