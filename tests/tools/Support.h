// What the tests of the tools share: runs in this process and as programs, golden files, a folder of one's
// own.

#ifndef TESTS_TOOLS_SUPPORT_H
#define TESTS_TOOLS_SUPPORT_H

#include "common/Failure.h"
#include "krtpal/common/text.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

struct Outcome {
    int status = 0;
    std::string output;
    std::string errors;
};

/// Runs a tool's code in this process.
template <class Run, class... More>
Outcome Capture(Run run, const std::vector<std::string>& arguments, More... more) {
    std::ostringstream output;
    std::ostringstream errors;
    const int status = run(arguments, output, errors, more...);
    return {status, output.str(), errors.str()};
}

/// The bytes of a file, whose name is UTF-8; empty if there is none.
inline std::string BytesOf(const std::string& path) {
    std::ifstream stream(tools::PathOf(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// Writes a file and returns its name.
inline std::string Write(const std::string& name, const std::string& bytes) {
    std::ofstream(tools::PathOf(name), std::ios::binary) << bytes;
    return name;
}

/// A text as it was printed, whatever ends its lines.
inline std::string TextOf(const std::string& path) {
    std::string text = BytesOf(path);
    std::erase(text, '\r');
    return text;
}

/// Runs a built program through the system's command interpreter. Arguments hold no quotes.
inline Outcome RunProgram(const std::string& program, const std::vector<std::string>& arguments) {
    std::string command = "\"" + std::filesystem::path(program).make_preferred().string() + "\"";
    for (const std::string& argument : arguments) {
        command += " \"" + argument + "\"";
    }
    command += " > program.out 2> program.err";
#ifdef _WIN32
    // The interpreter there takes the outermost quotes off.
    const int status = _wsystem(krtpal::WideFromUtf8("\"" + command + "\"").c_str());
#else
    const int result = std::system(command.c_str());
    const int status = (result & 0xFF) != 0 ? result : result >> 8; // the second byte
#endif
    const Outcome outcome{status, TextOf("program.out"), TextOf("program.err")};
    std::filesystem::remove("program.out");
    std::filesystem::remove("program.err");
    return outcome;
}

/// A file of tests/data.
inline std::string Golden(const std::string& name) {
    std::string text = TextOf(KRTBSS_SOURCE_DIR "/tests/data/" + name);
    EXPECT_NE(text, "") << name;
    return text;
}

/// The rows of a golden file: what goes in, and what is expected.
using Rows = std::vector<std::pair<std::vector<std::string>, std::string>>;
inline Rows GoldenRows(const std::string& name) {
    return nlohmann::json::parse(Golden(name)).get<Rows>();
}

/// Runs the arguments of each row, which have to be refused by its sentence.
template <class Run>
void ExpectRefusals(const std::string& tool, const std::string& name, Run run) {
    for (const auto& [arguments, sentence] : GoldenRows(name)) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.errors, tool + ": " + sentence + "\n") << testing::PrintToString(arguments);
        EXPECT_EQ(outcome.output, "") << sentence;
        EXPECT_EQ(outcome.status, 2) << sentence;
    }
}

/// Runs in an empty folder of its own, which goes at the end.
class InFolder : public testing::Test {
protected:
    InFolder() {
        std::filesystem::create_directory(m_Folder);
        std::filesystem::current_path(m_Folder);
    }
    ~InFolder() override {
        std::filesystem::current_path(m_Before);
        std::error_code ignored;
        std::filesystem::remove_all(m_Folder, ignored);
    }

private:
    std::filesystem::path m_Before = std::filesystem::current_path();
    std::filesystem::path m_Folder = m_Before / ("tools-" + std::to_string(std::random_device{}()));
};

#endif
