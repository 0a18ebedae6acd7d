// The failure of everything that comes from outside: the command line, files, databases, the place of the
// output.

#ifndef TOOLS_COMMON_FAILURE_H
#define TOOLS_COMMON_FAILURE_H

#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace tools {

/// what() is one sentence in UTF-8, which the program prints before it ends with exit status 2.
class Failure : public std::runtime_error {
public:
    explicit Failure(const std::string& sentence) : std::runtime_error(sentence) {}
    /// With the reports below it: `reason` ends the sentence, `chain` is all of them.
    Failure(const std::string& what, std::string reason, std::string chain)
        : std::runtime_error(what + (reason.empty() ? "." : ": " + reason + ".")),
          m_sReason(std::move(reason)), m_sChain(std::move(chain)) {}

    const std::string& Reason() const { return m_sReason; }
    const std::string& Chain() const { return m_sChain; }

private:
    std::string m_sReason;
    std::string m_sChain;
};

/// Returns the text between single quotes, with control characters as \xNN, so that a sentence stays one
/// line.
std::string Quote(const std::string& text);
/// The same of at most 80 bytes of the text, followed by three dots if there are more.
std::string QuoteStart(const std::string& text);

/// Returns the path that a UTF-8 text means, also on systems whose paths are not bytes.
std::filesystem::path PathOf(const std::string& utf8);

} // namespace tools

#endif
