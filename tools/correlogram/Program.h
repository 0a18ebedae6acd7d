// The program without its entry point.

#ifndef TOOLS_CORRELOGRAM_PROGRAM_H
#define TOOLS_CORRELOGRAM_PROGRAM_H

#include <ostream>
#include <string>
#include <vector>

namespace correlogram {

// Exit statuses.
inline constexpr int kSuccess = 0;
inline constexpr int kFitFailed = 1;
inline constexpr int kBadInput = 2;

// Does what the arguments behind the program's name ask for (UTF-8, as all output). The result goes to
// `output`, failures and what --verbose tells go to `errors`. Throws nothing.
int Run(const std::vector<std::string>& arguments, std::ostream& output, std::ostream& errors) noexcept;

} // namespace correlogram

#endif
