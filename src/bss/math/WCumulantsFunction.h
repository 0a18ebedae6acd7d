// Forwards to "bss/math/model/WCumulantsFunction.h", which declares WCumulantsFunction.
//
// Kept for sources that include this path; new sources include the other one.

#ifndef BSS_MATH_WCUMULANTSFUNCTION_H
#define BSS_MATH_WCUMULANTSFUNCTION_H

#include "bss/math/model/WCumulantsFunction.h"

#endif
