#include "common/CommandLine.h"

#include "common/Failure.h"

#include <CLI/CLI.hpp>

#include <utility>

namespace tools {

namespace {

std::string NameIn(const std::string& argument) {
    return argument.substr(0, argument.find('='));
}

bool IsFlag(const CLI::Option& option) {
    return option.get_items_expected_max() == 0;
}

} // namespace

CommandLine::CommandLine(std::string program)
    : m_sProgram(std::move(program)), m_pApp(std::make_unique<CLI::App>()) {
    m_pApp->set_help_flag();
    m_pApp->allow_windows_style_options(false);
    m_pApp->allow_extras(); // words, and unknown options, in their order
}

CommandLine::~CommandLine() = default;

void CommandLine::AddFlag(const std::string& names, std::function<void()> set) {
    const CLI::callback_t use = [this, set = std::move(set)](const CLI::results_t&) {
        PassWords();
        if (Current().find('=') != std::string::npos) {
            throw Failure(NameIn(Current()) + " takes no value.");
        }
        set();
        return true;
    };
    m_pApp->add_option(names, use)->expected(0)->trigger_on_parse();
}

void CommandLine::AddValue(const std::string& name, std::function<void(const std::string&)> take) {
    const CLI::callback_t use = [this, take = std::move(take)](const CLI::results_t& values) {
        PassWords();
        take(values.front());
        return true;
    };
    m_pApp->add_option(name, use)->trigger_on_parse();
}

void CommandLine::Parse(const std::vector<std::string>& arguments,
                        std::function<void(const std::string&)> take) {
    m_TakeWord = std::move(take);
    m_Arguments.clear();
    for (const std::string& argument : arguments) {
        m_Arguments.push_back(argument);
        // CLI11 takes nothing behind '=' for no value at all, and the next argument in its place.
        const std::string name = NameIn(argument);
        const CLI::Option* const option =
            argument == name + "=" ? std::as_const(*m_pApp).get_option_no_throw(name) : nullptr;
        if (option != nullptr && !IsFlag(*option)) {
            m_Arguments.back() = name;
            m_Arguments.emplace_back();
        }
    }
    m_Rest.assign(m_Arguments.rbegin(), m_Arguments.rend());
    try {
        m_pApp->parse(m_Rest);
    } catch (const CLI::ArgumentMismatch&) {
        PassWords();
        throw Failure(NameIn(m_Arguments.back()) + " needs a value behind it.");
    }
    PassWords();
}

void CommandLine::RefuseOption(const std::string& quoted) const {
    throw Failure("There is no option " + quoted + ": see " + m_sProgram + " --help.");
}

/// Those in front of the option that is being taken apart.
void CommandLine::PassWords() {
    const std::vector<std::string> words = m_pApp->remaining();
    while (m_nWords < words.size()) {
        m_TakeWord(words[m_nWords++]);
    }
}

/// The argument that was taken off last.
const std::string& CommandLine::Current() const {
    return m_Arguments[m_Arguments.size() - m_Rest.size() - 1];
}

} // namespace tools
