// A bar that tells how far a long walk has come.
//
//     Progress progress(&std::cerr, rows);     // null: there is no terminal to draw on
//     progress.Advance("Sample");
//     progress.Clear();                        // before anything else is printed

#ifndef TOOLS_KRTSTORE_PROGRESS_H
#define TOOLS_KRTSTORE_PROGRESS_H

#include <cstddef>
#include <ostream>
#include <string>

namespace krtstore {

class Progress {
public:
    Progress(std::ostream* terminal, std::size_t total) : m_pTerminal(terminal), m_nTotal(total) {}
    ~Progress() { Clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // One step further. The bar is drawn when the percentage changes.
    void Advance(const std::string& what);
    // The next step draws it again.
    void Clear();

private:
    std::ostream* m_pTerminal;
    std::size_t m_nTotal;
    std::size_t m_nDone = 0;
    std::size_t m_nPercent = 101; // none was drawn
    std::size_t m_nWidth = 0;     // of what is on the terminal
};

// Whether the standard error stream is a terminal.
bool HasTerminal();

} // namespace krtstore

#endif
