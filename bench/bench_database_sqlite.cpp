// SQLite's C interface with prepared statements, and the benchmark's own queries.

#include "bench_database.h"

#include <sqlite3.h>

#include <stdexcept>

namespace {

class Connection {
public:
    explicit Connection(const std::string& path) {
        Check(sqlite3_open(path.c_str(), &m_handle));
        sqlite3_busy_timeout(m_handle, 10'000);
    }
    ~Connection() { sqlite3_close(m_handle); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    sqlite3* Handle() { return m_handle; }
    void Check(int result) {
        if (result != SQLITE_OK && result != SQLITE_ROW && result != SQLITE_DONE) {
            throw std::runtime_error(std::string("SQLite: ") + sqlite3_errmsg(m_handle));
        }
    }
    void Execute(const std::string& sql) {
        Check(sqlite3_exec(m_handle, sql.c_str(), nullptr, nullptr, nullptr));
    }

private:
    sqlite3* m_handle = nullptr;
};

class Statement {
public:
    Statement(Connection& connection, const std::string& sql) : m_connection(connection) {
        m_connection.Check(sqlite3_prepare_v2(connection.Handle(), sql.c_str(), -1, &m_handle, nullptr));
    }
    ~Statement() { sqlite3_finalize(m_handle); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    void Bind(int number, std::int32_t value) {
        m_connection.Check(sqlite3_bind_int(m_handle, number, value));
    }
    void Bind(int number, double value) { m_connection.Check(sqlite3_bind_double(m_handle, number, value)); }
    // REQUIRES: the text outlives the execution of the statement.
    void Bind(int number, const std::string& text) {
        m_connection.Check(
            sqlite3_bind_text(m_handle, number, text.data(), static_cast<int>(text.size()), SQLITE_STATIC));
    }
    void BindBytes(int number, const std::string& bytes) {
        m_connection.Check(
            sqlite3_bind_blob(m_handle, number, bytes.data(), static_cast<int>(bytes.size()), SQLITE_STATIC));
    }
    // Returns true if there is a row.
    bool Step() {
        const int result = sqlite3_step(m_handle);
        m_connection.Check(result);
        return result == SQLITE_ROW;
    }
    void Reset() { m_connection.Check(sqlite3_reset(m_handle)); }
    void Run() {
        Step();
        Reset();
    }
    std::int32_t Integer(int column) { return sqlite3_column_int(m_handle, column); }
    long long Wide(int column) { return sqlite3_column_int64(m_handle, column); }
    double Real(int column) { return sqlite3_column_double(m_handle, column); }
    std::string Bytes(int column) {
        const void* const data = sqlite3_column_blob(m_handle, column);
        return {static_cast<const char*>(data),
                static_cast<std::size_t>(sqlite3_column_bytes(m_handle, column))};
    }

private:
    Connection& m_connection;
    sqlite3_stmt* m_handle = nullptr;
};

class Sqlite : public Contestant {
public:
    explicit Sqlite(const std::string& path) : m_connection(path) {
        m_connection.Execute("PRAGMA synchronous = FULL; PRAGMA foreign_keys = OFF");
    }

    void Take(const std::vector<Values>& objects) override { m_objects = objects; }
    std::vector<Values> Give() const override { return m_objects; }

    void Write(bool together) override {
        for (const Values& each : m_objects) {
            if (!together || &each == &m_objects.front()) {
                m_begin.Run();
            }
            WriteOne(each);
            if (!together || &each == &m_objects.back()) {
                m_commit.Run();
            }
        }
    }
    void Read(bool together) override {
        if (together) {
            m_begin.Run();
        }
        for (Values& each : m_objects) {
            ReadOne(each);
        }
        if (together) {
            m_commit.Run();
        }
    }

private:
    void WriteOne(const Values& values) {
        m_exists.Bind(1, values.group);
        m_exists.Bind(2, values.object);
        if (m_exists.Step()) {
            throw std::runtime_error("the row is there");
        }
        m_exists.Reset();
        const std::string key = NewKey();
        const std::string samples = FrameHeader(0, values.samples.size()) + values.samples;
        m_insert.Bind(1, key);
        m_insert.Bind(2, kVersion);
        m_insert.Bind(3, values.group);
        m_insert.Bind(4, values.object);
        m_insert.Bind(5, CheckSumText());
        m_insert.Bind(6, values.isOpen ? 1 : 0);
        m_insert.Bind(7, values.channel);
        m_insert.Bind(8, values.photons);
        m_insert.Bind(9, values.angle);
        m_insert.Bind(10, values.intensity);
        m_insert.Bind(11, values.name);
        m_insert.BindBytes(12, samples);
        m_insert.Run();
    }
    void ReadOne(Values& values) {
        m_select.Bind(1, values.group);
        m_select.Bind(2, values.object);
        if (!m_select.Step()) {
            throw std::runtime_error("no such row");
        }
        const std::string key = m_select.Bytes(0);
        values.group = m_select.Integer(2);
        values.object = m_select.Integer(3);
        const std::string checkSum = m_select.Bytes(4);
        values.isOpen = m_select.Integer(5) != 0;
        values.channel = m_select.Integer(6);
        values.photons = m_select.Integer(7);
        values.angle = m_select.Real(8);
        values.intensity = m_select.Real(9);
        values.name = m_select.Bytes(10);
        values.samples = m_select.Bytes(11).substr(FrameHeader(0, 0).size());
        m_select.Reset();
        if (key.empty() || checkSum.empty()) {
            throw std::runtime_error("no whole row");
        }
    }

    std::vector<Values> m_objects;
    Connection m_connection;
    Statement m_begin{m_connection, "BEGIN"};
    Statement m_commit{m_connection, "COMMIT"};
    Statement m_exists{m_connection, "SELECT m_nVersion FROM Reading WHERE groupID = ? AND objectID = ?"};
    Statement m_insert{
        m_connection,
        "INSERT INTO Reading (RecID, m_nVersion, groupID, objectID, checkSum, isOpen, channel, "
        "photons, angle, intensity, name, samples) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"};
    Statement m_select{
        m_connection,
        "SELECT RecID, m_nVersion, groupID, objectID, checkSum, isOpen, channel, photons, angle, "
        "intensity, name, samples FROM Reading WHERE groupID = ? AND objectID = ?"};
};

} // namespace

std::unique_ptr<Contestant> MakeSqlite(const std::string& path) {
    return std::make_unique<Sqlite>(path);
}

void Execute(const std::string& path, const std::string& sql) {
    Connection(path).Execute(sql);
}

long long Ask(const std::string& path, const std::string& sql) {
    Connection connection(path);
    Statement statement(connection, sql);
    statement.Step();
    return statement.Wide(0);
}
