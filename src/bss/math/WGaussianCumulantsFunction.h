// Moved: see "bss/math/model/WGaussianCumulantsFunction.h". This path stays for sources that include it.

#ifndef BSS_MATH_WGAUSSIANCUMULANTSFUNCTION_H
#define BSS_MATH_WGAUSSIANCUMULANTSFUNCTION_H

#include "bss/math/model/WGaussianCumulantsFunction.h"

#endif
