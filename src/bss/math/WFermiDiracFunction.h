// Moved: see "bss/math/model/WFermiDiracFunction.h". This path stays for sources that include it.

#ifndef BSS_MATH_WFERMIDIRACFUNCTION_H
#define BSS_MATH_WFERMIDIRACFUNCTION_H

#include "bss/math/model/WFermiDiracFunction.h"

#endif
