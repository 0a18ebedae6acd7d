// The entry point that the tools share (main.cpp): each defines the function below.

#ifndef TOOLS_COMMON_ENTRY_H
#define TOOLS_COMMON_ENTRY_H

#include <string>
#include <vector>

namespace tools {

/// Does what the arguments behind the program's name ask for, which are UTF-8 on every system. Returns the
/// exit status.
int RunTool(const std::vector<std::string>& arguments);

} // namespace tools

#endif
