// Tables of expected values in data files.

#ifndef TESTS_SUPPORT_ROWS_H
#define TESTS_SUPPORT_ROWS_H

#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

/// Returns the rows of tests/data/`name`: a line each, with tabs between the fields. \n, \r and \t in a field
/// are control characters; lines that begin with # are comments. Throws std::runtime_error if the file can't
/// be read.
inline std::vector<std::vector<std::string>> ReadRows(const std::string& name) {
    std::ifstream file(KRTBSS_SOURCE_DIR "/tests/data/" + name);
    if (!file) {
        throw std::runtime_error("can't read tests/data/" + name);
    }
    std::vector<std::vector<std::string>> rows;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#') {
            continue;
        }
        std::vector<std::string>& row = rows.emplace_back(1);
        for (std::size_t i = 0; i < line.size(); ++i) {
            if (line[i] == '\t') {
                row.emplace_back();
            } else if (line[i] == '\\') {
                const char escape = line.at(++i);
                row.back() += escape == 'n' ? '\n' : escape == 'r' ? '\r' : '\t';
            } else {
                row.back() += line[i];
            }
        }
    }
    return rows;
}

#endif
