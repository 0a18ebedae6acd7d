// Files that appear when they are whole.

#ifndef TOOLS_COMMON_WRITEFILE_H
#define TOOLS_COMMON_WRITEFILE_H

#include "common/Failure.h"

#include <functional>
#include <ostream>
#include <string>

namespace tools {

/// Lets `write` fill a file of another name in the same folder and renames it when it is whole: the file of
/// that name is the old one or the new one, never a part. Throws Failure if it can't be written; what `write`
/// throws passes. Nothing is left behind then. `quote` writes the file's name in the sentence.
void WriteWhole(const std::string& file, const std::function<void(std::ostream&)>& write,
                std::string (*quote)(const std::string&) = Quote);

} // namespace tools

#endif
