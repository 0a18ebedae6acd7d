#include "support/odbc/Statement.h"

#include "support/odbc/Names.h"

#include <algorithm>
#include <cstring>

namespace testodbc {

namespace {

using Parameter = Statement::Parameter;

SQLLEN IndicatorOf(const Parameter& parameter) {
    return parameter.indicator != nullptr ? *parameter.indicator : SQL_NTS;
}

bool ComesAtExecution(const Parameter& parameter) {
    const SQLLEN indicator = IndicatorOf(parameter);
    return indicator == SQL_DATA_AT_EXEC || indicator <= SQL_LEN_DATA_AT_EXEC_OFFSET;
}

std::size_t LengthUpToZero(int cType, const void* data) {
    if (cType == SQL_C_CHAR) {
        return std::strlen(static_cast<const char*>(data));
    }
    if (cType != SQL_C_WCHAR) {
        Fail("HY090", "a length is missing");
    }
    const auto* unit = static_cast<const SQLWCHAR*>(data);
    while (*unit != 0) {
        ++unit;
    }
    return static_cast<std::size_t>(unit - static_cast<const SQLWCHAR*>(data)) * sizeof(SQLWCHAR);
}

Bytes BytesOf(int cType, const void* data, SQLLEN length) {
    const std::optional<std::size_t> fixed = SizeOfC(cType);
    if (!fixed && length < 0 && length != SQL_NTS) {
        Fail("HY090", "length " + std::to_string(length));
    }
    const std::size_t size = fixed               ? *fixed
                             : length == SQL_NTS ? LengthUpToZero(cType, data)
                                                 : static_cast<std::size_t>(length);
    if (data == nullptr && size != 0) {
        Fail("HY009", "no data");
    }
    const auto* const bytes = static_cast<const unsigned char*>(data);
    return {bytes, bytes + size};
}

std::optional<Bytes> BytesOf(const Parameter& parameter) {
    const SQLLEN indicator = IndicatorOf(parameter);
    if (indicator == SQL_NULL_DATA) {
        return std::nullopt;
    }
    return BytesOf(parameter.cType, parameter.data, indicator);
}

std::string DescribeValue(const Parameter& parameter) {
    if (ComesAtExecution(parameter)) {
        return "at execution";
    }
    const std::optional<Bytes> bytes = BytesOf(parameter);
    return bytes ? HexOf(bytes->data(), bytes->size()) : "NULL";
}

std::string Describe(int number, const Parameter& parameter) {
    const std::string indicator =
        parameter.indicator != nullptr ? NameOfLength(*parameter.indicator) : "none";
    return "parameter " + std::to_string(number) + ' ' + NameOfCType(parameter.cType) + ' ' +
           NameOfSqlType(parameter.sqlType) + " size " + std::to_string(parameter.size) + " room " +
           std::to_string(parameter.room) + " indicator " + indicator + " value " + DescribeValue(parameter);
}

std::size_t TerminatorOf(int cType) {
    return cType == SQL_C_CHAR ? 1 : cType == SQL_C_WCHAR ? 2 : 0;
}

} // namespace

void Statement::BindColumn(int column, const Target& target) {
    if (target.data == nullptr) {
        m_columns.erase(column);
    } else {
        m_columns[column] = target;
    }
}

void Statement::Prepare(const std::string& sql) {
    m_prepared = Parse(sql, Driver::Get().control.GetSettings().flavour);
}

SQLRETURN Statement::Execute(const std::string& sql) {
    return Start(Parse(sql, Driver::Get().control.GetSettings().flavour));
}

SQLRETURN Statement::Start(const Query& query) {
    Cancel();
    Close();
    m_query = query;
    for (int number = query.markers; number >= 1; --number) {
        const auto parameter = m_parameters.find(number);
        if (parameter == m_parameters.end()) {
            Cancel();
            Fail("07002", "Too few parameters. Expected " + std::to_string(query.markers) + '.');
        }
        if (ComesAtExecution(parameter->second)) {
            m_waiting.push_back(number);
        }
    }
    for (int number = 1; number <= query.markers; ++number) {
        Driver::Get().details.push_back(Describe(number, m_parameters.at(number)));
    }
    return m_waiting.empty() ? Run() : SQL_NEED_DATA;
}

SQLRETURN Statement::Run() {
    m_result = m_connection.Execute(m_query, ParameterValues());
    return m_result.affected == 0 ? SQL_NO_DATA : SQL_SUCCESS;
}

std::vector<Value> Statement::ParameterValues() const {
    std::vector<Value> values;
    for (int number = 1; number <= m_query.markers; ++number) {
        const Parameter& parameter = m_parameters.at(number);
        const auto supplied = m_supplied.find(number);
        const std::optional<Bytes> bytes =
            supplied != m_supplied.end() ? supplied->second : BytesOf(parameter);
        values.push_back(bytes ? FromC(parameter.cType, *bytes) : Value());
    }
    return values;
}

SQLRETURN Statement::NextParameter(SQLPOINTER* data) {
    if (m_current != 0) {
        CheckSupplied();
    }
    if (m_waiting.empty()) {
        m_current = 0;
        return Run();
    }
    m_current = m_waiting.back();
    m_waiting.pop_back();
    *data = m_parameters.at(m_current).data;
    return SQL_NEED_DATA;
}

/// The driver wants to know lengths beforehand, as SQL Server's does, and holds the application to them.
void Statement::CheckSupplied() const {
    const auto supplied = m_supplied.find(m_current);
    if (supplied == m_supplied.end()) {
        Fail("HY010", "no data for parameter " + std::to_string(m_current));
    }
    const SQLLEN declared = SQL_LEN_DATA_AT_EXEC_OFFSET - IndicatorOf(m_parameters.at(m_current));
    if (declared >= 0 && supplied->second && supplied->second->size() != static_cast<std::size_t>(declared)) {
        Fail("22026", "parameter " + std::to_string(m_current) + " has " +
                          std::to_string(supplied->second->size()) + " bytes where " +
                          std::to_string(declared) + " were announced");
    }
}

void Statement::Put(SQLPOINTER data, SQLLEN length, std::string& line) {
    if (m_current == 0) {
        Fail("HY010", "no parameter is waiting for data");
    }
    if (length == SQL_NULL_DATA) {
        m_supplied[m_current] = std::nullopt;
        return;
    }
    const Bytes piece = BytesOf(m_parameters.at(m_current).cType, data, length);
    line += ' ' + HexOf(piece.data(), piece.size());
    std::optional<Bytes>& whole = m_supplied.try_emplace(m_current, Bytes()).first->second;
    if (!whole) {
        Fail("HY020", "a piece after NULL");
    }
    whole->insert(whole->end(), piece.begin(), piece.end());
}

void Statement::Cancel() {
    m_waiting.clear();
    m_supplied.clear();
    m_current = 0;
}

void Statement::Show(std::size_t width, std::vector<Row> rows) {
    Close();
    m_result = {true, width, std::move(rows), -1};
}

SQLRETURN Statement::Fetch() {
    if (!m_result.isRowSet) {
        Fail("24000", "no cursor is open");
    }
    m_progress = {};
    if (m_next >= m_result.rows.size()) {
        m_next = m_result.rows.size() + 1;
        return SQL_NO_DATA;
    }
    const Row& row = m_result.rows[m_next++];
    SQLRETURN result = SQL_SUCCESS;
    for (const auto& [column, target] : m_columns) {
        Progress fromStart;
        if (static_cast<std::size_t>(column) <= row.size() &&
            Deliver(row[static_cast<std::size_t>(column) - 1], target, fromStart) != SQL_SUCCESS) {
            result = SQL_SUCCESS_WITH_INFO;
        }
    }
    return result;
}

void Statement::CheckOrder(std::size_t column) const {
    const unsigned extensions = Driver::Get().control.Extensions();
    const std::size_t lastBound = m_columns.empty() ? 0 : static_cast<std::size_t>(m_columns.rbegin()->first);
    if (column < 1 || column > m_result.width ||
        ((extensions & SQL_GD_ANY_ORDER) == 0 && column < m_progress.column) ||
        ((extensions & SQL_GD_ANY_COLUMN) == 0 && column <= lastBound)) {
        Fail("07009", "Invalid Descriptor Index");
    }
}

SQLRETURN Statement::GetData(std::size_t column, const Target& target) {
    if (m_next == 0 || m_next > m_result.rows.size()) {
        Fail("24000", "no row has been fetched");
    }
    CheckOrder(column);
    if (m_progress.column != column) {
        m_progress = {column};
    }
    if (m_progress.isDone) {
        return SQL_NO_DATA;
    }
    return Deliver(m_result.rows[m_next - 1][column - 1], target, m_progress);
}

void Statement::Close() {
    m_result = {};
    m_next = 0;
    m_progress = {};
}

SQLRETURN Statement::Deliver(const Value& value, const Target& target, Progress& progress) {
    if (std::holds_alternative<Null>(value)) {
        if (target.indicator == nullptr) {
            Fail("22002", "Indicator variable required but not supplied");
        }
        *target.indicator = SQL_NULL_DATA;
        progress.isDone = true;
        return SQL_SUCCESS;
    }
    if (progress.cType != target.cType) {
        progress.image = ToC(target.cType, value);
        progress.cType = target.cType;
    }
    if (IsVariableC(target.cType)) {
        return ResultOf(*this, DeliverPiece(target, progress));
    }
    const Bytes& image = progress.image;
    if (target.data == nullptr) {
        Fail("HY009", "no buffer for a value of fixed size");
    }
    std::memcpy(target.data, image.data(), image.size());
    if (target.indicator != nullptr) {
        *target.indicator = static_cast<SQLLEN>(image.size());
    }
    progress.isDone = true;
    return SQL_SUCCESS;
}

/// As much as the buffer holds, with a zero behind text. True if nothing is left.
bool Statement::DeliverPiece(const Target& target, Progress& progress) {
    const Bytes& image = progress.image;
    const std::size_t zero = TerminatorOf(target.cType);
    const std::size_t left = image.size() - progress.bytes;
    const auto room = static_cast<std::size_t>(std::max<SQLLEN>(target.room, 0));
    const std::size_t character = std::max<std::size_t>(zero, 1);
    const std::size_t usable = room < zero ? 0 : (room - zero) / character * character;
    const std::size_t count = std::min(left, usable);
    if (target.data != nullptr && room >= zero) {
        auto* const out = static_cast<unsigned char*>(target.data);
        std::copy_n(image.data() + progress.bytes, count, out);
        std::fill_n(out + count, zero, static_cast<unsigned char>(0));
    }
    progress.bytes += count;
    progress.isDone = count == left && room >= zero;
    if (target.indicator != nullptr) {
        const bool isHidden = !progress.isDone && Driver::Get().control.GetSettings().hidesTotals;
        *target.indicator = isHidden ? SQL_NO_TOTAL : static_cast<SQLLEN>(left);
    }
    return progress.isDone;
}

} // namespace testodbc
