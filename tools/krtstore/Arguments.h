// The command line.

#ifndef TOOLS_KRTSTORE_ARGUMENTS_H
#define TOOLS_KRTSTORE_ARGUMENTS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace krtstore {

enum class Command { List, Show, Verify, Export };

struct Arguments {
    Command command = Command::List;
    std::string file;       // database file; all paths are UTF-8, as given
    std::string dataSource; // in its place: a named data source, with the user's name
    std::string user;
    std::string passwordFile;        // its first line is the password; empty: the environment has it
    std::string output;              // of an export; empty: the standard output
    std::vector<std::string> tables; // empty: all
    std::optional<std::int64_t> group;
    std::optional<std::int64_t> object;
    bool verbose = false;
    bool help = false; // nothing else is checked then
};

// Reads the arguments behind the program's name. An option's value follows as next argument or behind '='.
// Throws tools::Failure for what is unknown, missing, too many, or does not go together.
Arguments ParseArguments(const std::vector<std::string>& arguments);

// What --help prints.
std::string HelpText();

} // namespace krtstore

#endif
