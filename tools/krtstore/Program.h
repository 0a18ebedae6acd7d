// The program without its entry point.

#ifndef TOOLS_KRTSTORE_PROGRAM_H
#define TOOLS_KRTSTORE_PROGRAM_H

#include <ostream>
#include <string>
#include <vector>

namespace krtstore {

// Exit statuses.
inline constexpr int kSound = 0;
inline constexpr int kFaultsFound = 1;
inline constexpr int kNotDone = 2;

// Does what the arguments behind the program's name ask for (UTF-8, as all output). Failures go to `errors`,
// and the progress bar if that is a terminal. Throws nothing.
int Run(const std::vector<std::string>& arguments, std::ostream& output, std::ostream& errors,
        bool hasTerminal) noexcept;

} // namespace krtstore

#endif
