// Forwards to "bss/math/model/WBroadeningFunction.h", which declares WBroadeningFunction.
//
// Kept for sources that include this path; new sources include the other one.

#ifndef BSS_MATH_WBROADENINGFUNCTION_H
#define BSS_MATH_WBROADENINGFUNCTION_H

#include "bss/math/model/WBroadeningFunction.h"

#endif
