#include "Program.h"
#include "common/Entry.h"

#include <iostream>

int tools::RunTool(const std::vector<std::string>& arguments) {
    return correlogram::Run(arguments, std::cout, std::cerr);
}
