// Moved: see "bss/math/model/WTriangleDitherFitFunction.h". This path stays for sources that include it.

#ifndef BSS_MATH_WTRIANGLEDITHERFITFUNCTION_H
#define BSS_MATH_WTRIANGLEDITHERFITFUNCTION_H

#include "bss/math/model/WTriangleDitherFitFunction.h"

#endif
