#include "Curve.h"

#include "TextFormat.h"
#include "common/Failure.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace correlogram {

using tools::Failure;
using tools::PathOf;
using tools::QuoteStart;

namespace {

struct Columns {
    std::vector<double> first;
    std::vector<double> second;
    std::vector<std::size_t> line;
};

std::string At(const std::string& file, std::size_t line) {
    return QuoteStart(file) + ", line " + std::to_string(line) + ": ";
}

std::string TooLarge(const std::string& file, const std::string& size) {
    return QuoteStart(file) + " is no measured curve: it has " + size + " bytes, and at most " +
           std::to_string(kLargestFile) + " are read.";
}

// The whole file, after its kind and size have been looked at. What has no size of its own, as a pipe, is
// read up to the limit.
std::string ReadBytes(const std::string& file) {
    const std::filesystem::path path = PathOf(file);
    std::error_code failure;
    const auto status = std::filesystem::status(path, failure);
    if (!std::filesystem::exists(status)) {
        const bool isMissing = status.type() == std::filesystem::file_type::not_found;
        throw Failure("Cannot read " + QuoteStart(file) + ": " +
                      (isMissing ? std::string("there is no such file") : failure.message()) + ".");
    }
    if (std::filesystem::is_directory(status)) {
        throw Failure("Cannot read " + QuoteStart(file) + ": it is a folder.");
    }
    if (std::filesystem::is_regular_file(status)) {
        const std::uintmax_t size = std::filesystem::file_size(path, failure);
        if (!failure && size > kLargestFile) {
            throw Failure(TooLarge(file, std::to_string(size)));
        }
    }
    std::ifstream stream(path, std::ios::binary);
    std::string bytes;
    std::string block(65536, '\0');
    while (stream && bytes.size() <= kLargestFile) {
        stream.read(block.data(), static_cast<std::streamsize>(block.size()));
        bytes.append(block, 0, static_cast<std::size_t>(stream.gcount()));
    }
    if (bytes.size() > kLargestFile) {
        throw Failure(TooLarge(file, "more"));
    }
    if (!stream.eof()) {
        throw Failure("Cannot read " + QuoteStart(file) + ".");
    }
    if (bytes.empty()) {
        throw Failure(QuoteStart(file) + " is empty (0 bytes).");
    }
    return bytes;
}

void RefuseBinary(const std::string& file, std::string_view text, std::size_t line) {
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20U && c != '\t') {
            throw Failure(At(file, line) + "this is no text, it holds a byte of value " +
                          std::to_string(byte) + ".");
        }
    }
}

std::vector<std::string> SplitCells(std::string_view text) {
    std::vector<std::string> cells(1);
    for (const char c : text) {
        if (c == ',' || c == ';' || c == '\t') {
            cells.emplace_back();
        } else {
            cells.back() += c;
        }
    }
    return cells;
}

double ParseCell(const std::string& file, std::size_t line, const char* column, const std::string& cell) {
    const auto value = ParseNumber(cell);
    if (!value) {
        throw Failure(At(file, line) + "the " + column + " " + QuoteStart(cell) + " is not a number.");
    }
    if (!std::isfinite(*value)) {
        throw Failure(At(file, line) + "the " + column + " " + QuoteStart(cell) + " is not a finite number.");
    }
    return *value;
}

void AppendRow(const std::string& file, std::size_t line, const char* column, std::string_view text,
               Columns& table) {
    const std::vector<std::string> cells = SplitCells(text);
    if (cells.size() != 2) {
        throw Failure(At(file, line) + "there " + (cells.size() == 1 ? "is" : "are") + " " +
                      std::to_string(cells.size()) + " column" + (cells.size() == 1 ? "" : "s") +
                      " where 2 are expected, lag and " + column + ".");
    }
    const bool isHeading = line == 1 && !ParseNumber(cells[0]) && !ParseNumber(cells[1]);
    if (isHeading) {
        return;
    }
    const double lag = ParseCell(file, line, "lag", cells[0]);
    const double value = ParseCell(file, line, column, cells[1]);
    if (lag <= 0.0) {
        throw Failure(At(file, line) + "the lag " + FormatGeneral(lag, 6) + " is not above zero.");
    }
    if (!table.first.empty() && lag <= table.first.back()) {
        throw Failure(At(file, line) + "the lag " + FormatGeneral(lag, 6) + " is not above the lag " +
                      FormatGeneral(table.first.back(), 6) + " of line " + std::to_string(table.line.back()) +
                      ".");
    }
    table.first.push_back(lag);
    table.second.push_back(value);
    table.line.push_back(line);
}

Columns ReadTable(const std::string& file, const char* column) {
    const std::string bytes = ReadBytes(file);
    std::string_view rest = bytes;
    if (rest.starts_with("\xEF\xBB\xBF")) {
        rest.remove_prefix(3);
    }
    Columns table;
    std::size_t line = 0;
    while (!rest.empty()) {
        ++line;
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        std::string_view text = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (text.ends_with('\r')) {
            text.remove_suffix(1);
        }
        RefuseBinary(file, text, line);
        if (text.find_first_not_of(" \t") != std::string_view::npos) {
            AppendRow(file, line, column, text, table);
        }
    }
    if (table.first.empty()) {
        throw Failure(At(file, line) + "the file ends without a single point.");
    }
    return table;
}

} // namespace

Curve ReadCurve(const std::string& file) {
    Columns table = ReadTable(file, "g2 - 1");
    return {file, std::move(table.first), std::move(table.second), {}, std::move(table.line)};
}

void ReadSigma(const std::string& file, Curve& curve) {
    Columns table = ReadTable(file, "standard deviation");
    for (std::size_t i = 0; i < table.first.size(); ++i) {
        if (i == curve.lag.size()) {
            throw Failure(At(file, table.line[i]) + "there are more points than the " +
                          std::to_string(curve.lag.size()) + " of " + QuoteStart(curve.file) + ".");
        }
        if (std::abs(table.first[i] - curve.lag[i]) > 1e-9 * curve.lag[i]) {
            throw Failure(At(file, table.line[i]) + "the lag " + FormatGeneral(table.first[i], 6) +
                          " is not the lag " + FormatGeneral(curve.lag[i], 6) + " of " +
                          QuoteStart(curve.file) + ", line " + std::to_string(curve.line[i]) + ".");
        }
        if (table.second[i] <= 0.0) {
            throw Failure(At(file, table.line[i]) + "the standard deviation " +
                          FormatGeneral(table.second[i], 6) + " is not above zero.");
        }
    }
    if (table.first.size() < curve.lag.size()) {
        throw Failure(At(file, table.line.back()) + "the file ends after " +
                      std::to_string(table.first.size()) + " of the " + std::to_string(curve.lag.size()) +
                      " points of " + QuoteStart(curve.file) + ".");
    }
    curve.sigma = std::move(table.second);
}

} // namespace correlogram
