// A statement handle: bound columns and parameters, the statement under way, and its rows.

#ifndef TESTS_SUPPORT_ODBC_STATEMENT_H
#define TESTS_SUPPORT_ODBC_STATEMENT_H

#include "support/odbc/Handles.h"

namespace testodbc {

class Statement : public Handle {
public:
    /// A buffer of the application, for a column
    struct Target {
        int cType = 0;
        SQLPOINTER data = nullptr;
        SQLLEN room = 0;
        SQLLEN* indicator = nullptr;
    };

    /// A buffer of the application with a value for a parameter, read when the statement is executed
    struct Parameter {
        int cType = 0;
        int sqlType = 0;
        SQLULEN size = 0;
        SQLPOINTER data = nullptr;
        SQLLEN room = 0;
        const SQLLEN* indicator = nullptr;
    };

    explicit Statement(Connection& connection) : Handle('S'), m_connection(connection) {}

    Connection& GetConnection() { return m_connection; }

    void BindColumn(int column, const Target& target);
    void BindParameter(int number, const Parameter& parameter) { m_parameters[number] = parameter; }
    void Unbind() { m_columns.clear(); }
    void ResetParameters() { m_parameters.clear(); }

    void Prepare(const std::string& sql);
    SQLRETURN ExecutePrepared() { return Start(m_prepared); }
    SQLRETURN Execute(const std::string& sql);
    SQLRETURN NextParameter(SQLPOINTER* data);
    void Put(SQLPOINTER data, SQLLEN length, std::string& line);
    void Cancel();

    /// Makes the rows of a catalogue call the result.
    void Show(std::size_t width, std::vector<Row> rows);
    SQLRETURN Fetch();
    SQLRETURN GetData(std::size_t column, const Target& target);
    void Close();

    bool HasRows() const { return m_result.isRowSet; }
    std::size_t Width() const { return m_result.width; }
    long Affected() const { return m_result.affected; }

private:
    /// How far SQLGetData is in the row
    struct Progress {
        std::size_t column = 0;
        std::size_t bytes = 0;
        bool isDone = false;
        int cType = 0; ///< of the image
        Bytes image{}; ///< made once for all pieces of a value
    };

    SQLRETURN Start(const Query& query);
    SQLRETURN Run();
    std::vector<Value> ParameterValues() const;
    void CheckSupplied() const;
    void CheckOrder(std::size_t column) const;
    SQLRETURN Deliver(const Value& value, const Target& target, Progress& progress);
    static bool DeliverPiece(const Target& target, Progress& progress);

    Connection& m_connection;
    std::map<int, Target> m_columns;
    std::map<int, Parameter> m_parameters;
    Query m_prepared;
    Query m_query;
    std::vector<int> m_waiting; ///< parameters whose data is still to come, the next one last
    int m_current = 0;          ///< the one whose data is coming, or 0
    std::map<int, std::optional<Bytes>> m_supplied; ///< nothing for NULL
    Result m_result;
    std::size_t m_next = 0; ///< position of the row that is fetched next
    Progress m_progress;
};

} // namespace testodbc

#endif
