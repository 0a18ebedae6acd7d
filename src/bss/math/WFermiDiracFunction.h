// Forwards to "bss/math/model/WFermiDiracFunction.h", which declares WFermiDiracFunction.
//
// Kept for sources that include this path; new sources include the other one.

#ifndef BSS_MATH_WFERMIDIRACFUNCTION_H
#define BSS_MATH_WFERMIDIRACFUNCTION_H

#include "bss/math/model/WFermiDiracFunction.h"

#endif
