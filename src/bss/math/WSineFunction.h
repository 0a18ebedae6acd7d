// Moved: see "bss/math/model/WSineFunction.h". This path stays for sources that include it.

#ifndef BSS_MATH_WSINEFUNCTION_H
#define BSS_MATH_WSINEFUNCTION_H

#include "bss/math/model/WSineFunction.h"

#endif
