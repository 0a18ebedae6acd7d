// The failure of everything that comes from outside: the command line, the files read, the place of the plot.

#ifndef TOOLS_CORRELOGRAM_INPUTERROR_H
#define TOOLS_CORRELOGRAM_INPUTERROR_H

#include <stdexcept>
#include <string>

namespace correlogram {

// what() is one sentence in UTF-8 that names the option, or the file and the line. The program prints it and
// ends with exit status 2.
class InputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The text between single quotes, cut at 80 bytes, with control characters as \xNN, so that a sentence stays
// one line.
std::string Quote(const std::string& text);

} // namespace correlogram

#endif
