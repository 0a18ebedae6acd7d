#include "Program.h"
#include "Verify.h"
#include "common/Entry.h"

#include <iostream>

int tools::RunTool(const std::vector<std::string>& arguments) {
    return krtstore::Run(arguments, std::cout, std::cerr, krtstore::HasTerminal());
}
