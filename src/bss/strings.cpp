// The module's string table on systems whose modules have no resources.

#include "krtpal/module.h"

#define KRTBSS_STRING(number, text) {number, L"" text},

// clang-format off
const krtpal::StringTableEntry krtbss_string_table[] = {
#include "bss/strings.inc"
    {0, nullptr},
};
// clang-format on
