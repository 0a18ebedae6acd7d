// The command line of a tool, taken apart by CLI11, with the tools' own sentences for what is wrong in it.
//
//     CommandLine line("krtstore");
//     line.AddFlag("--verbose", [&] { verbose = true; });
//     line.AddValue("--output", [&](const std::string& file) { output = file; });
//     line.Parse(arguments, [&](const std::string& word) { words.push_back(word); });
//
// The functions are called in the order of the arguments and may throw; the first failure ends the walk. The
// value of an option is the next argument, whatever it begins with, or follows a '='. A repeated option is
// taken each time.

#ifndef TOOLS_COMMON_COMMANDLINE_H
#define TOOLS_COMMON_COMMANDLINE_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace tools {

class CommandLine {
public:
    /// `program` stands in the sentences.
    explicit CommandLine(std::string program);
    ~CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    /// Names as CLI11 takes them: "-h,--help".
    void AddFlag(const std::string& names, std::function<void()> set);
    void AddValue(const std::string& name, std::function<void(const std::string&)> take);

    /// Passes each argument that is no option to `take`, unknown options included: which words look like
    /// options differs between the tools. Throws Failure for a flag with a value and an option without one.
    void Parse(const std::vector<std::string>& arguments, std::function<void(const std::string&)> take);

    /// Throws the Failure of a word that looks like an option; the name comes in its quotes.
    [[noreturn]] void RefuseOption(const std::string& quoted) const;

private:
    void PassWords();
    const std::string& Current() const;

    std::string m_sProgram;
    std::unique_ptr<CLI::App> m_pApp;
    std::vector<std::string> m_Arguments;
    std::vector<std::string> m_Rest; // those that are not taken apart yet, the next one last
    std::function<void(const std::string&)> m_TakeWord;
    std::size_t m_nWords = 0; // that were passed on
};

} // namespace tools

#endif
