// Forwards to "bss/math/model/WGaussianCumulantsFunction.h", which declares WGaussianCumulantsFunction.
//
// Kept for sources that include this path; new sources include the other one.

#ifndef BSS_MATH_WGAUSSIANCUMULANTSFUNCTION_H
#define BSS_MATH_WGAUSSIANCUMULANTSFUNCTION_H

#include "bss/math/model/WGaussianCumulantsFunction.h"

#endif
