// Entry point where a command line is bytes.

#include "Program.h"
#include "Progress.h"

#include <clocale>
#include <iostream>

int main(int count, char** values) {
    // The driver manager speaks to drivers of narrow text in the locale's encoding; names are UTF-8.
    if (std::setlocale(LC_CTYPE, "C.UTF-8") == nullptr) {
        std::setlocale(LC_CTYPE, "");
    }
    return krtstore::Run({values + (count > 0 ? 1 : 0), values + count}, std::cout, std::cerr,
                         krtstore::HasTerminal());
}
