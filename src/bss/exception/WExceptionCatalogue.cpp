#define BSS_DEFINE_CATALOGUE
#include "bss/exception/WExceptionCatalogue.h"
