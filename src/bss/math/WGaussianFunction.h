// Forwards to "bss/math/model/WGaussianFunction.h", which declares WGaussianFunction.
//
// Kept for sources that include this path; new sources include the other one.

#ifndef BSS_MATH_WGAUSSIANFUNCTION_H
#define BSS_MATH_WGAUSSIANFUNCTION_H

#include "bss/math/model/WGaussianFunction.h"

#endif
