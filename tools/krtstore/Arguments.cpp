#include "Arguments.h"

#include "Text.h"
#include "common/CommandLine.h"
#include "common/Failure.h"

#include <algorithm>
#include <deque>

namespace krtstore {

using tools::Failure;

namespace {

constexpr char kSeeHelp[] = ": see krtstore --help.";

bool IsOption(const std::string& argument) {
    // A number below zero is none.
    return argument.size() > 1 && argument[0] == '-' && !ParseInteger(argument);
}

Command ParseCommand(const std::string& name) {
    static constexpr struct {
        const char* name;
        Command command;
    } commands[] = {{"ls", Command::List},
                    {"show", Command::Show},
                    {"verify", Command::Verify},
                    {"export", Command::Export}};
    const auto* const found = std::find_if(std::begin(commands), std::end(commands),
                                           [&](const auto& each) { return each.name == name; });
    if (found == std::end(commands)) {
        throw Failure("There is no command " + Quote(name) + kSeeHelp);
    }
    return found->command;
}

/// The next word; empty if there is none.
std::string Take(std::deque<std::string>& words) {
    std::string word;
    if (!words.empty()) {
        word = words.front();
        words.pop_front();
    }
    return word;
}

std::optional<std::int64_t> TakeNumber(std::deque<std::string>& words, const char* of) {
    if (words.empty()) {
        return std::nullopt;
    }
    const std::string word = Take(words);
    const auto number = ParseInteger(word);
    if (!number) {
        throw Failure(Quote(word) + " is not the number of " + of + ".");
    }
    return number;
}

void ParseWords(std::deque<std::string> words, Arguments& result) {
    if (words.empty()) {
        throw Failure(std::string("No command is given") + kSeeHelp);
    }
    result.command = ParseCommand(Take(words));
    if (result.dataSource.empty()) {
        result.file = Take(words);
        if (result.file.empty()) {
            throw Failure(std::string("No database is given") + kSeeHelp);
        }
    }
    if (result.command == Command::Show) {
        if (words.empty()) {
            throw Failure("show needs the name of a table.");
        }
        result.tables = {Take(words)};
        result.group = TakeNumber(words, "a group");
        result.object = TakeNumber(words, "an object");
    } else if (result.command != Command::List) {
        result.tables.assign(words.begin(), words.end());
        words.clear();
    }
    if (!words.empty()) {
        throw Failure(Quote(words.front()) + " is one argument too many" + kSeeHelp);
    }
}

void CheckTogether(const Arguments& arguments) {
    if (!arguments.user.empty() && arguments.dataSource.empty()) {
        throw Failure("--user goes with --data-source.");
    }
    if (!arguments.passwordFile.empty() && arguments.dataSource.empty()) {
        throw Failure("--password-from goes with --data-source.");
    }
    if (!arguments.output.empty() && arguments.command != Command::Export) {
        throw Failure("--output goes with export.");
    }
}

} // namespace

Arguments ParseArguments(const std::vector<std::string>& arguments) {
    Arguments result;
    std::deque<std::string> words;
    tools::CommandLine line("krtstore");
    const auto value = [&](const std::string& name, std::string& target) {
        line.AddValue(name, [name, &target](const std::string& text) {
            if (text.empty()) {
                throw Failure(name + " needs a value behind it.");
            }
            target = text;
        });
    };
    value("--data-source", result.dataSource);
    value("--user", result.user);
    value("--password-from", result.passwordFile);
    value("--output", result.output);
    line.AddFlag("--verbose", [&] { result.verbose = true; });
    line.AddFlag("-h,--help", [&] { result.help = true; });
    line.Parse(arguments, [&](const std::string& word) {
        if (IsOption(word)) {
            line.RefuseOption(Quote(word.substr(0, word.find('='))));
        }
        words.push_back(word);
    });
    if (!result.help) {
        ParseWords(std::move(words), result);
        CheckTogether(result);
    }
    return result;
}

std::string HelpText() {
    return "krtstore ls DB                            tables, with rows, versions and columns\n"
           "krtstore show DB TABLE [GROUP [OBJECT]]   rows in full\n"
           "krtstore verify DB [TABLE...]             tests every row, its structure and its checksum\n"
           "krtstore export DB [TABLE...]             every row as JSON\n"
           "\n"
           "Looks into a database of measured data and changes nothing in it. DB is an SQLite file, or in "
           "its "
           "place\n"
           "\n"
           "  --data-source NAME     an ODBC data source\n"
           "  --user NAME            of the data source\n"
           "  --password-from FILE   its first line is the password; without this option the environment's\n"
           "                         KRTSTORE_PASSWORD is\n"
           "\n"
           "  --output FILE          write the export into a file, whole or not at all\n"
           "  --verbose              tell all that the driver said of a failure\n"
           "  --help                 print this text\n"
           "\n"
           "Exit status: 0 done, and all that was tested is sound; 1 verify found faults; 2 it could not be "
           "done.\n";
}

} // namespace krtstore
