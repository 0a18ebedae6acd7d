// Entry point where a command line is bytes.

#include "Program.h"

#include <iostream>

int main(int count, char** values) {
    return correlogram::Run({values + (count > 0 ? 1 : 0), values + count}, std::cout, std::cerr);
}
