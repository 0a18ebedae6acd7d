// The failure of everything that comes from outside: the command line, the database, the place of the output.

#ifndef TOOLS_KRTSTORE_FAILURE_H
#define TOOLS_KRTSTORE_FAILURE_H

#include <stdexcept>
#include <string>

namespace krtstore {

// what() is one sentence in UTF-8, which the program prints before it ends with exit status 2.
class Failure : public std::runtime_error {
public:
    explicit Failure(const std::string& sentence) : std::runtime_error(sentence) {}
    // With what the driver says: its first text, which ends the sentence, and all of it.
    Failure(const std::string& what, std::string reason, std::string chain)
        : std::runtime_error(what + (reason.empty() ? "." : ": " + reason + ".")),
          m_sReason(std::move(reason)), m_sChain(std::move(chain)) {}

    const std::string& Reason() const { return m_sReason; }
    const std::string& Chain() const { return m_sChain; }

private:
    std::string m_sReason;
    std::string m_sChain;
};

} // namespace krtstore

#endif
