// Forwards to "bss/math/model/WSineFunction.h", which declares WSineFunction.
//
// Kept for sources that include this path; new sources include the other one.

#ifndef BSS_MATH_WSINEFUNCTION_H
#define BSS_MATH_WSINEFUNCTION_H

#include "bss/math/model/WSineFunction.h"

#endif
