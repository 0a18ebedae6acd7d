// Moved: see "bss/math/model/WCumulantsFunction.h". This path stays for sources that include it.

#ifndef BSS_MATH_WCUMULANTSFUNCTION_H
#define BSS_MATH_WCUMULANTSFUNCTION_H

#include "bss/math/model/WCumulantsFunction.h"

#endif
