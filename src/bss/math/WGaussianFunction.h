// Moved: see "bss/math/model/WGaussianFunction.h". This path stays for sources that include it.

#ifndef BSS_MATH_WGAUSSIANFUNCTION_H
#define BSS_MATH_WGAUSSIANFUNCTION_H

#include "bss/math/model/WGaussianFunction.h"

#endif
