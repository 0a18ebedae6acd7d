// Bare ODBC: the library's statements, prepared once, without any other work. Doubles are fetched as text,
// since the driver would return 15 digits of them.

#include "bench_database.h"

#include <sql.h>
#include <sqlext.h>
#include <zlib.h>

#include <stdexcept>

namespace {

void Check(SQLRETURN result, SQLSMALLINT kind, SQLHANDLE handle) {
    if (SQL_SUCCEEDED(result) || result == SQL_NO_DATA) {
        return;
    }
    SQLCHAR state[6] = {};
    SQLCHAR text[512] = {};
    SQLGetDiagRec(kind, handle, 1, state, nullptr, text, sizeof(text), nullptr);
    throw std::runtime_error(std::string("ODBC: ") + reinterpret_cast<const char*>(text));
}

class Connection {
public:
    explicit Connection(const std::string& path) {
        SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &m_environment);
        SQLSetEnvAttr(m_environment, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
        SQLAllocHandle(SQL_HANDLE_DBC, m_environment, &m_handle);
        std::string text = OdbcConnection(path);
        Check(SQLDriverConnect(m_handle, nullptr, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS, nullptr,
                               0, nullptr, SQL_DRIVER_NOPROMPT),
              SQL_HANDLE_DBC, m_handle);
    }
    ~Connection() {
        SQLDisconnect(m_handle);
        SQLFreeHandle(SQL_HANDLE_DBC, m_handle);
        SQLFreeHandle(SQL_HANDLE_ENV, m_environment);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    SQLHDBC Handle() { return m_handle; }
    void SetAutoCommit(bool isOn) {
        const std::uintptr_t value = isOn ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF;
        Check(SQLSetConnectAttr(m_handle, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(value),
                                SQL_IS_UINTEGER),
              SQL_HANDLE_DBC, m_handle);
    }
    void Commit() { Check(SQLEndTran(SQL_HANDLE_DBC, m_handle, SQL_COMMIT), SQL_HANDLE_DBC, m_handle); }

private:
    SQLHENV m_environment = nullptr;
    SQLHDBC m_handle = nullptr;
};

// A prepared statement whose parameters stay bound; each execution reads their current values.
class Statement {
public:
    Statement(Connection& connection, std::string sql) {
        SQLAllocHandle(SQL_HANDLE_STMT, connection.Handle(), &m_handle);
        Demand(SQLPrepare(m_handle, reinterpret_cast<SQLCHAR*>(sql.data()), SQL_NTS));
    }
    ~Statement() { SQLFreeHandle(SQL_HANDLE_STMT, m_handle); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    void Bind(SQLUSMALLINT number, std::int32_t& value) {
        BindParameter(number, SQL_C_SLONG, SQL_INTEGER, 0, &value, sizeof(value), nullptr);
    }
    void Bind(SQLUSMALLINT number, double& value) {
        BindParameter(number, SQL_C_DOUBLE, SQL_DOUBLE, 0, &value, sizeof(value), nullptr);
    }
    void BindBit(SQLUSMALLINT number, unsigned char& value) {
        BindParameter(number, SQL_C_BIT, SQL_BIT, 0, &value, sizeof(value), nullptr);
    }
    void BindText(SQLUSMALLINT number, char* text, std::size_t room, SQLLEN* length) {
        BindParameter(number, SQL_C_CHAR, SQL_LONGVARCHAR, room, text, static_cast<SQLLEN>(room), length);
    }
    void BindBytes(SQLUSMALLINT number, void* bytes, std::size_t room, SQLLEN* length) {
        BindParameter(number, SQL_C_BINARY, SQL_LONGVARBINARY, room, bytes, static_cast<SQLLEN>(room),
                      length);
    }
    void BindColumn(std::int32_t& value) {
        Demand(SQLBindCol(m_handle, 1, SQL_C_SLONG, &value, sizeof(value), nullptr));
    }
    void Execute() { Demand(SQLExecute(m_handle)); }
    bool Fetch() {
        const SQLRETURN result = SQLFetch(m_handle);
        Demand(result);
        return result != SQL_NO_DATA;
    }
    void Close() { SQLFreeStmt(m_handle, SQL_CLOSE); }

    template <class Value>
    void Get(SQLUSMALLINT column, SQLSMALLINT type, Value& value) {
        SQLLEN length = 0;
        Demand(SQLGetData(m_handle, column, type, &value, sizeof(value), &length));
    }
    std::string GetText(SQLUSMALLINT column) {
        char text[256];
        std::string whole;
        SQLLEN length = 0;
        SQLRETURN result = SQL_SUCCESS_WITH_INFO;
        while (result == SQL_SUCCESS_WITH_INFO) {
            result = SQLGetData(m_handle, column, SQL_C_CHAR, text, sizeof(text), &length);
            Demand(result);
            whole.append(text, std::min(static_cast<std::size_t>(length), sizeof(text) - 1));
        }
        return whole;
    }
    std::string GetBytes(SQLUSMALLINT column) {
        char start[256];
        SQLLEN length = 0;
        const SQLRETURN result = SQLGetData(m_handle, column, SQL_C_BINARY, start, sizeof(start), &length);
        Demand(result);
        const auto size = static_cast<std::size_t>(length);
        std::string bytes(start, std::min(size, sizeof(start)));
        if (size > sizeof(start)) {
            bytes.resize(size);
            Demand(SQLGetData(m_handle, column, SQL_C_BINARY, bytes.data() + sizeof(start),
                              length - static_cast<SQLLEN>(sizeof(start)), &length));
        }
        return bytes;
    }

private:
    void BindParameter(SQLUSMALLINT number, SQLSMALLINT cType, SQLSMALLINT sqlType, SQLULEN size, void* value,
                       SQLLEN room, SQLLEN* length) {
        Demand(SQLBindParameter(m_handle, number, SQL_PARAM_INPUT, cType, sqlType, size, 0, value, room,
                                length));
    }
    void Demand(SQLRETURN result) { Check(result, SQL_HANDLE_STMT, m_handle); }

    SQLHSTMT m_handle = nullptr;
};

class Odbc : public Contestant {
public:
    explicit Odbc(const std::string& path) : m_connection(path) {
        for (Statement* const each : {&m_exists, &m_select}) {
            each->Bind(1, m_row.group);
            each->Bind(2, m_row.object);
        }
        m_exists.BindColumn(m_version);
        m_insert.BindText(1, m_row.key, sizeof(m_row.key), &m_row.keyLength);
        m_insert.Bind(2, m_row.version);
        m_insert.Bind(3, m_row.group);
        m_insert.Bind(4, m_row.object);
        m_insert.BindText(5, m_row.checkSum, sizeof(m_row.checkSum), &m_row.checkSumLength);
        m_insert.BindBit(6, m_row.isOpen);
        m_insert.Bind(7, m_row.channel);
        m_insert.Bind(8, m_row.photons);
        m_insert.Bind(9, m_row.angle);
        m_insert.Bind(10, m_row.intensity);
        m_insert.BindText(11, m_row.name, sizeof(m_row.name), &m_row.nameLength);
        m_insert.BindBytes(12, m_row.samples, sizeof(m_row.samples), &m_row.samplesLength);
    }

    void Take(const std::vector<Values>& objects) override { m_objects = objects; }
    std::vector<Values> Give() const override { return m_objects; }

    void Write(bool together) override {
        m_connection.SetAutoCommit(false);
        for (const Values& each : m_objects) {
            WriteOne(each);
            if (!together || &each == &m_objects.back()) {
                m_connection.Commit();
            }
        }
        m_connection.SetAutoCommit(true);
    }
    void Read(bool together) override {
        m_connection.SetAutoCommit(!together);
        for (Values& each : m_objects) {
            ReadOne(each);
        }
        if (together) {
            m_connection.Commit();
            m_connection.SetAutoCommit(true);
        }
    }

private:
    struct Row {
        char key[64];
        SQLLEN keyLength;
        std::int32_t version;
        std::int32_t group;
        std::int32_t object;
        char checkSum[64];
        SQLLEN checkSumLength;
        unsigned char isOpen;
        std::int32_t channel;
        std::int32_t photons;
        double angle;
        double intensity;
        char name[256];
        SQLLEN nameLength;
        char samples[256];
        SQLLEN samplesLength;
    };

    template <std::size_t room>
    static void Put(const std::string& bytes, char (&target)[room], SQLLEN& length) {
        std::memcpy(target, bytes.data(), std::min(bytes.size(), room));
        length = static_cast<SQLLEN>(bytes.size());
    }
    void WriteOne(const Values& values) {
        m_row.group = values.group;
        m_row.object = values.object;
        m_exists.Execute();
        if (m_exists.Fetch()) {
            throw std::runtime_error("the row is there");
        }
        m_exists.Close();
        Put(NewKey(), m_row.key, m_row.keyLength);
        m_row.version = kVersion;
        Put(CheckSumText(), m_row.checkSum, m_row.checkSumLength);
        m_row.isOpen = values.isOpen ? 1 : 0;
        m_row.channel = values.channel;
        m_row.photons = values.photons;
        m_row.angle = values.angle;
        m_row.intensity = values.intensity;
        Put(values.name, m_row.name, m_row.nameLength);
        Put(FrameHeader(0, values.samples.size()) + values.samples, m_row.samples, m_row.samplesLength);
        m_insert.Execute();
    }
    void ReadOne(Values& values) {
        m_row.group = values.group;
        m_row.object = values.object;
        m_select.Execute();
        if (!m_select.Fetch()) {
            throw std::runtime_error("no such row");
        }
        const std::string key = m_select.GetText(1);
        std::int32_t version = 0;
        m_select.Get(2, SQL_C_SLONG, version);
        m_select.Get(3, SQL_C_SLONG, values.group);
        m_select.Get(4, SQL_C_SLONG, values.object);
        const std::string checkSum = m_select.GetText(5);
        unsigned char isOpen = 0;
        m_select.Get(6, SQL_C_BIT, isOpen);
        values.isOpen = isOpen != 0;
        m_select.Get(7, SQL_C_SLONG, values.channel);
        m_select.Get(8, SQL_C_SLONG, values.photons);
        m_select.Get(9, SQL_C_DOUBLE, values.angle);
        m_select.Get(10, SQL_C_DOUBLE, values.intensity);
        values.name = m_select.GetText(11);
        values.samples = m_select.GetBytes(12).substr(FrameHeader(0, 0).size());
        m_select.Close();
        if (key.empty() || checkSum.empty() || version != kVersion) {
            throw std::runtime_error("no whole row");
        }
    }

    std::vector<Values> m_objects;
    Row m_row{};
    std::int32_t m_version = 0;
    Connection m_connection;
    Statement m_exists{m_connection, "SELECT m_nVersion FROM Reading WHERE groupID = ? AND objectID = ?"};
    Statement m_insert{
        m_connection,
        "INSERT INTO Reading (RecID, m_nVersion, groupID, objectID, checkSum, isOpen, channel, "
        "photons, angle, intensity, name, samples) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"};
    Statement m_select{
        m_connection,
        "SELECT RecID, m_nVersion, groupID, objectID, checkSum, isOpen, channel, photons, "
        "CASE typeof(angle) WHEN 'real' THEN printf('%!.20g', angle) ELSE angle END, "
        "CASE typeof(intensity) WHEN 'real' THEN printf('%!.20g', intensity) ELSE intensity END, "
        "name, samples FROM Reading WHERE groupID = ? AND objectID = ?"};
};

class OdbcSeries : public SeriesContestant {
public:
    OdbcSeries(const std::string& path, bool isFramed) : m_connection(path), m_isFramed(isFramed) {
        for (Statement* const each : {&m_exists, &m_select}) {
            each->Bind(1, m_group);
            each->Bind(2, m_object);
        }
        m_exists.BindColumn(m_version);
    }

    void Write(const std::vector<double>& samples) override {
        m_connection.SetAutoCommit(false);
        m_exists.Execute();
        if (m_exists.Fetch()) {
            throw std::runtime_error("the row is there");
        }
        m_exists.Close();
        std::string key = NewKey();
        std::string checkSum = CheckSumText();
        std::int32_t version = kVersion;
        std::string frame = m_isFramed ? Frame(samples) : std::string();
        // const_cast: the driver does not change input parameters.
        void* const bytes =
            m_isFramed ? frame.data() : static_cast<void*>(const_cast<double*>(samples.data()));
        const std::size_t size = m_isFramed ? frame.size() : samples.size() * sizeof(double);
        auto keyLength = static_cast<SQLLEN>(key.size());
        auto checkSumLength = static_cast<SQLLEN>(checkSum.size());
        auto length = static_cast<SQLLEN>(size);
        m_insert.BindText(1, key.data(), key.size(), &keyLength);
        m_insert.Bind(2, version);
        m_insert.Bind(3, m_group);
        m_insert.Bind(4, m_object);
        m_insert.BindText(5, checkSum.data(), checkSum.size(), &checkSumLength);
        m_insert.BindBytes(6, bytes, size, &length);
        m_insert.Execute();
        m_connection.Commit();
        m_connection.SetAutoCommit(true);
    }
    std::vector<double> Read() override {
        m_select.Execute();
        if (!m_select.Fetch()) {
            throw std::runtime_error("no such row");
        }
        const std::string bytes = m_select.GetBytes(6);
        m_select.Close();
        std::uint32_t header[4] = {};
        if (m_isFramed) {
            std::memcpy(header, bytes.data(), std::min(sizeof(header), bytes.size()));
        }
        std::vector<double> samples((m_isFramed ? header[2] : bytes.size()) / sizeof(double));
        if (!m_isFramed) {
            std::memcpy(samples.data(), bytes.data(), bytes.size());
            return samples;
        }
        auto room = static_cast<unsigned long>(samples.size() * sizeof(double));
        if (uncompress(reinterpret_cast<unsigned char*>(samples.data()), &room,
                       reinterpret_cast<const unsigned char*>(bytes.data()) + sizeof(header),
                       header[1]) != Z_OK) {
            throw std::runtime_error("zlib");
        }
        return samples;
    }

private:
    static std::string Frame(const std::vector<double>& samples) {
        const auto size = static_cast<unsigned long>(samples.size() * sizeof(double));
        const std::size_t header = FrameHeader(0, 0).size();
        unsigned long packed = compressBound(size);
        std::string frame(header + packed, '\0');
        if (compress2(reinterpret_cast<unsigned char*>(frame.data()) + header, &packed,
                      reinterpret_cast<const unsigned char*>(samples.data()), size,
                      Z_NO_COMPRESSION) != Z_OK) {
            throw std::runtime_error("zlib");
        }
        frame.resize(header + packed);
        frame.replace(0, header, FrameHeader(packed, size));
        return frame;
    }

    Connection m_connection;
    bool m_isFramed;
    std::int32_t m_group = 1;
    std::int32_t m_object = 1;
    std::int32_t m_version = 0;
    Statement m_exists{m_connection, "SELECT m_nVersion FROM Series WHERE groupID = ? AND objectID = ?"};
    Statement m_insert{m_connection,
                       "INSERT INTO Series (RecID, m_nVersion, groupID, objectID, checkSum, samples) "
                       "VALUES (?, ?, ?, ?, ?, ?)"};
    Statement m_select{m_connection, "SELECT RecID, m_nVersion, groupID, objectID, checkSum, samples FROM "
                                     "Series WHERE groupID = ? AND objectID = ?"};
};

} // namespace

std::unique_ptr<Contestant> MakeOdbc(const std::string& path) {
    return std::make_unique<Odbc>(path);
}

std::unique_ptr<SeriesContestant> MakeOdbcSeries(const std::string& path, bool isFramed) {
    return std::make_unique<OdbcSeries>(path, isFramed);
}
