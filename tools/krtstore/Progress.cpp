#include "Progress.h"

#include "Text.h"

#include "krtpal/console.h"
#include "krtpal/unqualified.h"

#include <algorithm>

namespace krtstore {

void Progress::Advance(const std::string& what) {
    ++m_nDone;
    // Rows may come while they are read.
    const std::size_t percent =
        std::min<std::size_t>(100, m_nDone * 100 / std::max<std::size_t>(m_nTotal, 1));
    if (m_pTerminal == nullptr || percent == m_nPercent) {
        return;
    }
    Clear();
    constexpr std::size_t width = 40;
    const std::string done(percent * width / 100, '#');
    const std::string line =
        "[" + PadRight(done, width) + "] " + PadLeft(std::to_string(percent), 3) + " % " + what.substr(0, 30);
    *m_pTerminal << line << std::flush;
    m_nPercent = percent;
    m_nWidth = line.size();
}

void Progress::Clear() {
    if (m_pTerminal != nullptr && m_nWidth != 0) {
        *m_pTerminal << '\r' << std::string(m_nWidth, ' ') << '\r' << std::flush;
        m_nWidth = 0;
        m_nPercent = 101;
    }
}

bool HasTerminal() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

} // namespace krtstore
