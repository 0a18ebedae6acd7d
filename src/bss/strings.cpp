// The table of strings where modules have no resources.

#include "platform/module.h"

#define KRTBSS_STRING(number, text) {number, L"" text},

// clang-format off
const platform::StringTableEntry krtbss_string_table[] = {
#include "bss/strings.inc"
    {0, nullptr},
};
// clang-format on
