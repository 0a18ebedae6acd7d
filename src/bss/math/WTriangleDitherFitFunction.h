// Forwards to "bss/math/model/WTriangleDitherFitFunction.h", which declares WTriangleDitherFitFunction.
//
// Kept for sources that include this path; new sources include the other one.

#ifndef BSS_MATH_WTRIANGLEDITHERFITFUNCTION_H
#define BSS_MATH_WTRIANGLEDITHERFITFUNCTION_H

#include "bss/math/model/WTriangleDitherFitFunction.h"

#endif
