// Moved: see "bss/math/model/WBroadeningFunction.h". This path stays for sources that include it.

#ifndef BSS_MATH_WBROADENINGFUNCTION_H
#define BSS_MATH_WBROADENINGFUNCTION_H

#include "bss/math/model/WBroadeningFunction.h"

#endif
