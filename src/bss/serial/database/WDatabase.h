// WDatabase: the serializer that stores persistent objects in an ODBC database. A class is a table, an object
// a row, a serialized member a column (docs/database-format.md).
//
//     bss::WDatabase database;
//     database.ConnectFile(L"", L"", L"results.db");          // or Connect(user, password, data source)
//     run.Write(&database, 0, true);                          // creates and extends the tables it needs
//     run.Read(&database, 0, true);                           // the row of run's group and object number
//
// Every table begins with RecID, m_nVersion, groupID, objectID and checkSum. The pair of group and object
// number is the key of an object. A row has a checksum over its members, which every read verifies. New
// members become new columns, which are NULL in the existing rows.
//
// A write has two transactions: the first creates tables and columns, the second writes rows. Either all rows
// of a write, those of components included, are stored, or none. SetTransactionMode and Transact nest: only
// the outermost level reaches the database.
//
// Failures. The connection, the schema and the transactions throw WNEODBCError and WNEODBCTypeNotSupported;
// statements and values throw WNESerializerError; a table that can't be created or extended and a corrupt
// binary value throw std::runtime_error; a corrupt compressed value throws WNECompressionFile. Read and Write
// of an object wrap these failures (WPersistentObject.h).
//
// Back-ends: Microsoft Access and SQL Server; SQLite, the embedded default on Linux; PostgreSQL as the
// server, by a data source of its Unicode driver. An unknown driver is treated as Access if it fetches
// columns in any order, otherwise as SQL Server. For SQLite and PostgreSQL the statements of an object are
// prepared once for each connection and cached.
//
// Threads: an object may be used from one thread at a time.

#ifndef BSS_SERIAL_DATABASE_WDATABASE_H
#define BSS_SERIAL_DATABASE_WDATABASE_H

#include "bss/Export.h"
#include "bss/serial/WSerializer.h"
#include "bss/thread/WSyncObject.h"
#include "krtpal/types.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace bss {

class SqlDialect;

/// A connection to a database, and the serializer that uses it.
class KRTBSS_API WDatabase : public WSerializer, private sync::WNoncopyable {
public:
    /// How the connection was made.
    enum e_connection : int { connectionNone = 0, connectionDataSource = 1, connectionFile = 2 };
    /// The mode of a transaction level. Manual: Transact commits or rolls back. Auto: each statement commits.
    enum etransactionmode : int { transactionManual = 0, transactionAuto = 1 };
    /// The end of a transaction level.
    enum etransaction : int { transactionCommit = 0, transactionRollback = 1 };

    /// One column of a table.
    class KRTBSS_API column {
    public:
        /// Describes a column. See the members.
        column(std::int32_t columnOrdinal, std::wstring columnName, std::wstring columnType)
            : ordinal(columnOrdinal), name(std::move(columnName)), type(std::move(columnType)) {}
        column(const column&) = default;
        column& operator=(const column&) = default;
        // There is no virtual destructor: the two comparisons are the only virtual operations of the
        // interface.

        /// Compares the ordinals.
        virtual bool operator<(const column& other) const;
        /// Compares the ordinals.
        virtual bool operator>(const column& other) const;

        /// The position that the driver reports, from 1; -1 until the column is in the table.
        std::int32_t ordinal;
        /// The name, which is the label of the member.
        std::wstring name;
        /// The back-end's name of the type.
        std::wstring type;
    };

    /// One value of the statement in progress.
    class KRTBSS_API parameter {
    public:
        /// The kind of the value. Columns of other types are kindNone and are skipped.
        enum e_kind : std::int32_t {
            kindNone = 0,
            kindBit = 1,
            /// A flag as the character 0 or 1, for back-ends without a bit type.
            kindBoolCharacter = 2,
            kindInteger = 3,
            kindDouble = 4,
            kindText = 5,
            /// Fetched as kindText. The library has no column of this kind.
            kindTextToo = 6,
            kindBinary = 7,
            kindGuid = 8
        };

        /// Copies the value from `source`: 1 byte for kindBit and kindBoolCharacter, 4 for kindInteger, 8 for
        /// kindDouble, 16 for kindGuid, `length` UTF-16 code units for text, `length` bytes for kindBinary. A
        /// null source leaves `data` null.
        parameter(e_kind parameterKind, std::wstring columnName, const void* source, std::int32_t length,
                  long objectVersion);
        parameter(const parameter&) = delete;
        parameter& operator=(const parameter&) = delete;
        virtual ~parameter();
        /// Compares the column indices.
        virtual bool operator<(const parameter& other) const;
        /// Compares the column indices.
        virtual bool operator>(const parameter& other) const;

        /// Returns the number of bytes of the data: twice the length for text.
        std::size_t GetByteCount() const;

        /// The kind of the value.
        e_kind kind;
        /// The name of the column.
        std::wstring name;
        /// The position of the column in its table, from 1; -1 if unknown.
        std::int32_t columnIndex = -1;
        /// The number of the statement's marker, from 1.
        std::int16_t number = 0;
        /// The value; null for NULL.
        std::unique_ptr<unsigned char[]> data;
        /// The length of the data: code units of text, otherwise bytes.
        std::int32_t dataLength;
        /// The length indicator of the binding.
        std::intptr_t indicator = 0;
        /// The packed version of the object.
        std::int32_t version;
        /// The value in the form of the driver, if that differs from `data`.
        std::optional<std::string> driverForm;
    };

    /// An experiment, as GetMissingExperimentDirectoryInfo reports it.
    struct entryInfo {
        /// The group number of the experiment.
        long group;
        /// The path, at most 129 UTF-16 code units.
        std::wstring path;
        /// The name, at most 129 UTF-16 code units.
        std::wstring name;
    };

    /// Makes an object without a connection.
    WDatabase();
    /// Disconnects.
    ~WDatabase() noexcept override;

    /// Connects to a data source of the machine's ODBC administrator, after a Disconnect.
    /// Throws WNEODBCError if the connection fails, WNEODBCTypeNotSupported if the back-end lacks a required
    /// type. There is then no connection.
    void Connect(const std::wstring& user, const std::wstring& password, const std::wstring& dataSource);
    /// Opens a database file, which the SQLite driver creates if it does not exist. Names that end in .db or
    /// .sqlite use SQLite, .mdb Access, all others SQLite on Linux and Access on Windows. Throws as Connect
    /// does.
    void ConnectFile(const std::wstring& user, const std::wstring& password, const std::wstring& filePath);
    /// Closes the connection and discards open transaction levels. Does nothing without a connection.
    void Disconnect();
    /// Returns true if there is a connection.
    bool IsConnected() const { return m_eConnection != connectionNone; }
    /// Returns how the connection was made.
    e_connection GetConnectionType() const { return m_eConnection; }
    /// Returns the data source or the file path of the connection; empty without a connection.
    const std::wstring& GetDataSource() const { return m_sDataSource; }
    /// Returns the user as given to the last Connect or ConnectFile.
    const std::wstring& GetUserID() const { return m_sUser; }
    /// Returns the user's name that the driver reports; empty without a connection or without a name.
    std::wstring GetUser() const;
    /// Returns the database's name that the driver reports; empty without a connection. For a data source
    /// whose back-end is not "access" the extension is replaced by ".mdb" (kept for compatibility).
    std::wstring GetDatabasePath() const;

    /// Returns true if the schema has the table. Uses the schema that was read at connect and is updated by
    /// this object; does not query the database.
    bool HasTable(const std::wstring& table) const;
    /// Returns true if the table has the column. See HasTable.
    bool HasColumn(const std::wstring& table, const std::wstring& column) const;

    /// Opens a transaction level. The outermost level sets the connection's autocommit by its mode; for inner
    /// levels the mode is ignored. Throws WNEODBCError if that fails.
    void SetTransactionMode(etransactionmode mode);
    /// Closes a transaction level. Closing the outermost level commits or rolls back the whole transaction
    /// and restores autocommit. Does nothing without a level. Throws WNEODBCError if the commit or rollback
    /// fails; the level then stays open.
    void Transact(etransaction kind);

    // Queries. They return 0, or the result that each comment gives, if the statement fails (a missing table)
    // or has no rows. Throws WNESerializerError if reading the rows fails.

    /// Returns the number of rows of a table.
    long GetRowCount(const std::wstring& table);
    /// Returns column 1 of the last row.
    long GetLongFromQuery(const std::wstring& query);
    /// Returns column 1 of all rows, followed by that of the last row (or 0) a second time (kept for
    /// compatibility). Returns an empty vector if the statement fails.
    std::vector<long> GetVectorOfLongsFromQuery(const std::wstring& query);
    /// Returns the number of directory entries of a class. `className` may have the wildcards of LIKE and is
    /// not escaped.
    long GetDirectoryEntryCount(const std::wstring& className);
    /// Returns the group numbers of a table's rows. See GetVectorOfLongsFromQuery for the form.
    std::vector<long> GetEntryIDs(const std::wstring& table);
    /// Returns the experiments without a directory entry, the last one twice (kept for compatibility).
    std::vector<entryInfo> GetMissingExperimentDirectoryInfo();

    /// Returns true if the database has the object's row in a version above 5.0.0.0. `pVersion` (may be null)
    /// then receives that packed version.
    bool Exists(const WPersistentObject& object, long* pVersion);

    // WPersistentObject::Read, Write and Delete are the entry points and call these three operations.

    /// Reads the row of the object and, if `bDeep`, its components, in one transaction.
    void Read(WPersistentObject& object, bool bDeep) override;
    /// Creates or extends the tables, then writes the row of the object and, if `bDeep`, its components. A
    /// deep write to a data source first deletes the stored components. Rolls back on failure.
    void Write(WPersistentObject& object, bool bDeep) override;
    using WSerializer::Delete;
    /// Deletes the row of the object and, if `bDeep`, its components, in one transaction. A missing row is
    /// ignored.
    void Delete(WPersistentObject& object, bool bDeep) override;

    // The operations of WSerializer. `key` is the label, which is the name of the column.
    //
    // The first pass of a write only collects missing columns. The second pass adds the value to the
    // statement and to the checksum. A binary value has one column, below version 5.3.2.0 three. Throws
    // WNESerializerError, whose text has the column, for a value of 2^30 or more bytes or code units and,
    // with the exceptions stated below, for a null pointer with a count or a negative count.

    /// See WSerializer::Insert. Column: wide text, and an integer column for the count.
    void Insert(const std::wstring& key, const std::vector<std::wstring>& values) override;
    /// See WSerializer::Insert. Column: binary.
    void Insert(const std::wstring& key, const std::vector<bool>& values) override;
    /// See WSerializer::Insert. Column: binary.
    void Insert(const std::wstring& key, const std::vector<double>& values) override;
    /// See WSerializer::Insert. Column: binary.
    void Insert(const std::wstring& key, const std::vector<long>& values) override;
    /// See WSerializer::Insert. Column: binary.
    void Insert(const std::wstring& key, const std::vector<int>& values) override;
    /// See WSerializer::Insert. Column: wide text. An empty text is stored as a blank.
    void Insert(const std::wstring& key, const std::wstring& value) override;
    /// See WSerializer::Insert. Column: binary. An empty text is stored as a blank.
    void Insert(const std::wstring& key, const std::string& value) override;
    /// See WSerializer::Insert. Column: wide text, and an integer column for the count. Null or a negative
    /// count stores an empty array.
    void Insert(const std::wstring& key, const std::wstring* const data, long count) override;
    /// See WSerializer::Insert. Column: binary. Null or a negative count stores an empty array.
    void Insert(const std::wstring& key, const std::string* const data, long count) override;
    /// See WSerializer::Insert. Column: binary.
    void Insert(const std::wstring& key, const double* const data, long count) override;
    /// See WSerializer::Insert. Column: binary.
    void Insert(const std::wstring& key, const float* const data, long count) override;
    /// See WSerializer::Insert. Column: binary. Throws WNESerializerError for an element beyond 32 bits.
    void Insert(const std::wstring& key, const long* const data, long count) override;
    /// See WSerializer::Insert. Column: binary.
    void Insert(const std::wstring& key, const unsigned char* const data, long count) override;
    /// See WSerializer::Insert. Column: wide text, "YYYY-MM-DD HH:MM:SS".
    void Insert(const std::wstring& key, struct tm value) override;
    /// See WSerializer::Insert. Column: GUID.
    void Insert(const std::wstring& key, GUID value) override;
    /// See WSerializer::Insert. Column: floating point.
    void Insert(const std::wstring& key, double value) override;
    /// See WSerializer::Insert. Column: floating point.
    void Insert(const std::wstring& key, float value) override;
    /// See WSerializer::Insert. Column: integer. Throws WNESerializerError for a value beyond 32 bits.
    void Insert(const std::wstring& key, long value) override;
    /// See WSerializer::Insert. Column: integer.
    void Insert(const std::wstring& key, short value) override;
    /// See WSerializer::Insert. Column: bit.
    void Insert(const std::wstring& key, bool value) override;
    /// See WSerializer::InsertF. Column: binary. From version 5.3.2.0 on the values keep their precision.
    void InsertF(const std::wstring& key, const std::vector<double>& values) override;

    // Retrieve reads a value of the row that StartRetrieval fetched, and adds it to the checksum. NULL gives
    // 0 or an empty text. Throws WNESerializerError for a column that is not in the row, and from
    // version 5.3.2.0 on for a binary value that is NULL.

    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& key, std::vector<std::wstring>& values) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& key, std::vector<bool>& values) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& key, std::vector<double>& values) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& key, std::vector<long>& values) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& key, std::vector<int>& values) override;
    /// See WSerializer::Retrieve. A text of a single blank is read as an empty text.
    void Retrieve(const std::wstring& key, std::wstring& value) override;
    /// See WSerializer::Retrieve. An empty text is read as a single blank (kept for compatibility).
    void Retrieve(const std::wstring& key, std::string& value) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& key, std::wstring*& data, long& count) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& key, std::string*& data, long& count) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& key, double*& data, long& count) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& key, float*& data, long& count) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& key, long*& data, long& count) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& key, unsigned char*& data, long& count) override;
    /// See WSerializer::Retrieve. Leaves the day of the week and of the year unchanged.
    void Retrieve(const std::wstring& key, struct tm& value) override;
    /// See WSerializer::Retrieve. Throws WNESerializerError for NULL.
    void Retrieve(const std::wstring& key, GUID& value) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& key, double& value) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& key, float& value) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& key, long& value) override;
    /// See WSerializer::Retrieve. Keeps the low 16 bits of the column.
    void Retrieve(const std::wstring& key, short& value) override;
    /// See WSerializer::Retrieve.
    void Retrieve(const std::wstring& key, bool& value) override;
    /// See WSerializer::RetrieveF.
    void RetrieveF(const std::wstring& key, std::vector<double>& values) override;

    // Further operations, in the virtual table after those of the base.

    /// Stores an array of integers of 16 bits. Column: binary.
    virtual void Insert(const std::wstring& key, const short* const data, long count);
    /// Stores an array of integers. Column: binary.
    virtual void Insert(const std::wstring& key, const int* const data, long count);
    /// Stores an array of flags. Column: binary.
    virtual void Insert(const std::wstring& key, const bool* const data, long count);
    /// Stores a vector of integers of 16 bits. Column: binary.
    virtual void Insert(const std::wstring& key, const std::vector<short>& values);
    /// Stores a vector of numbers in single precision. Column: binary.
    virtual void Insert(const std::wstring& key, const std::vector<float>& values);
    /// Stores a vector of narrow texts. Column: binary.
    virtual void Insert(const std::wstring& key, const std::vector<std::string>& values);
    /// Stores an integer of 32 bits. Column: integer.
    virtual void Insert(const std::wstring& key, int value);
    /// Reads an array of integers of 16 bits. The caller owns the array (`new[]`).
    virtual void Retrieve(const std::wstring& key, short*& data, long& count);
    /// Reads an array of integers. The caller owns the array (`new[]`).
    virtual void Retrieve(const std::wstring& key, int*& data, long& count);
    /// Reads an array of flags. The caller owns the array (`new[]`).
    virtual void Retrieve(const std::wstring& key, bool*& data, long& count);
    /// Reads a vector of integers of 16 bits.
    virtual void Retrieve(const std::wstring& key, std::vector<short>& values);
    /// Reads a vector of numbers in single precision.
    virtual void Retrieve(const std::wstring& key, std::vector<float>& values);
    /// Reads a vector of narrow texts.
    virtual void Retrieve(const std::wstring& key, std::vector<std::string>& values);
    /// Reads an integer of 32 bits.
    virtual void Retrieve(const std::wstring& key, int& value);

protected:
    /// The columns of the tables in their order, by the names of the tables.
    using tableMap = std::map<std::wstring, std::vector<column>>;
    using tableIterator = tableMap::const_iterator;
    /// The values of a row, written or fetched.
    using parameterList = std::list<std::unique_ptr<parameter>>;

    /// Reads the schema after connecting, with substitutes for types that the back-end lacks. Throws
    /// WNEODBCTypeNotSupported if there is no substitute.
    void CheckDataTypes();
    /// Reads the back-end's names of the required types. Throws WNEODBCTypeNotSupported for a missing one.
    void MapDataTypes();
    /// Reads the tables and their columns.
    void MapTables();
    /// Reads the columns of all tables.
    void MapColumns();
    /// Returns the position of a column in the current object's table, from 1, after adding it to the new
    /// columns if it is missing. Returns -1 without a table.
    int CreateColumn(const std::wstring& name, const std::wstring& typeName);
    /// Returns the text of all diagnostic records of a handle.
    std::wstring GetErrorMsg(void* handle, short handleType) const;
    /// Runs the text of the query stream on the schema statement. Throws WNESerializerError.
    void SendQuery();
    /// Runs the text of the query stream on a statement. Throws WNESerializerError.
    void SendQuery(void* statement);
    /// Clears the text of the query.
    void ClearQueryStream();
    /// Clears the text of the checksum.
    void ClearCheckSumStream();
    /// Selects the current object's row and fetches it. Throws WNESerializerError.
    void SendSelectQuery(const std::wstring& columns, void* statement);
    /// Returns the encrypted CRC-32 of a text.
    std::wstring CalculateCheckSum(const std::wstring& text) const;
    /// Returns the position of a column in the current object's table, from 1; -1 if the table has no such
    /// column, 1 if the table is unknown.
    int GetColumnIndexFromName(const std::wstring& name) const;
    /// Returns the position of a column in a table, from 1; -1 if there is none.
    static int GetColumnIndexFromName(tableIterator table, const std::wstring& name);

    /// Runs one pass over the object and, if `bDeep`, its components.
    void WriteObject(WPersistentObject& object, bool bDeep);
    /// See WriteObject.
    void ReadObject(WPersistentObject& object, bool bDeep);
    /// See WriteObject.
    void DeleteObject(WPersistentObject& object, bool bDeep);
    /// Clears the values and, in the second pass, begins the checksum. Throws WNEODBCError without the table.
    void StartInsertion(WPersistentObject& object) override;
    /// Inserts or updates the row with the collected values and the checksum. Throws WNESerializerError.
    void FinishInsertion(WPersistentObject& object) override;
    /// Fetches the whole row. Throws WNESerializerError if there is none.
    void StartRetrieval(WPersistentObject& object) override;
    /// Compares the checksum of the values with the stored one. Throws WNESerializerError if they differ.
    void FinishRetrieval() override;
    /// See FinishRetrieval().
    void FinishRetrieval(WPersistentObject& object);

    /// Returns the time as "YYYY-MM-DD HH:MM:SS".
    static std::wstring GetTimeString(struct tm time);
    /// Parses that text into `time`. Leaves the day of the week and of the year unchanged.
    static void GetTimeStructure(const std::wstring& text, struct tm& time);
    /// Escapes NUL, LF, CR, Ctrl-Z, both quotes and the backslash by a backslash. Returns the length of the
    /// result without its terminating 0. REQUIRES: `out` has room for 2 * length + 1 bytes.
    static long EscapeString(unsigned char* out, const unsigned char* in, long length);

private:
    /// The passes of a write. Reading and deleting have the second one only.
    enum e_pass : int { passNone = 0, passSchema = 1, passData = 2 };
    class Statement;
    class Reset;
    class CurrentObject;

    /// The cached statements of a table, so that their texts need not be composed to find them; null until
    /// prepared.
    struct KeptTable {
        /// An INSERT or UPDATE, for values of these columns.
        struct Change {
            std::vector<std::wstring> columns;
            void* statement = nullptr;
        };
        /// A column of the SELECT.
        struct Selected {
            parameter::e_kind kind;
            std::wstring name;
            /// The position in the selection, from 1.
            std::int32_t ordinal;
        };
        void* exists = nullptr;
        void* select = nullptr;
        std::vector<Selected> selected;
        Change insert;
        Change update;
    };

    /// Disconnects and throws WNEODBCError with the diagnostics of the handle. `debugText` precedes them in
    /// the debugger's output; null writes nothing there.
    [[noreturn]] void FailToConnect(const wchar_t* debugText, void* handle, short handleType);
    /// Allocates the environment and the connection.
    void OpenConnection(bool isFile);
    /// Selects the dialect and reads the schema.
    void ReadCapabilities(bool isFile);
    /// Reads the name of the schema whose tables are used: other schemas may have tables of the same names.
    void ReadSchema();
    /// Returns a text of SQLGetInfo; empty if the driver has none. `room` is in code units; 0 queries the
    /// length first.
    std::wstring GetInfoText(std::uint16_t what, std::size_t room) const;
    std::wstring NameOfCurrentClass() const;
    /// Returns the name of the object's class. Caches that of the current object.
    std::wstring NameOfClass(const WPersistentObject& object) const;
    /// Returns the table of the current object; the end of the tables if there is none.
    tableIterator CurrentTable() const;
    /// Returns class, group, object and column (if given) for messages. Null means the last object.
    std::wstring GetPosition(const WPersistentObject* object, const std::wstring& column = {}) const;
    void SetAutoCommit(etransactionmode mode);
    /// Runs a query on a statement of its own; `read` fetches the rows, and throws std::runtime_error on
    /// failure, which becomes WNESerializerError.
    void RunQuery(const std::wstring& query, const std::function<void(void* statement)>& read);
    void ReadAnswer(std::int16_t result, void* statement,
                    const std::function<void(void* statement)>& read) const;
    /// Runs a cached statement for an object's row. See RunQuery.
    void RunKeyQuery(void* statement, const WPersistentObject& object,
                     const std::function<void(void* statement)>& read);
    /// Fetches the object's row with the cached statement.
    void RetrieveRow(const WPersistentObject& object, const std::vector<column>& columns);
    /// Throws WNESerializerError if the result is an error.
    void DemandNoError(std::int16_t result, void* statement) const;
    /// Returns the cached statement of a text about an object. Prepares it if there is none.
    void* StatementFor(const std::wstring& text);
    /// Frees the cached statements, which have the state of their tables.
    void DropKeptStatements();
    std::wstring Quoted(const std::wstring& name) const;
    /// Returns the WHERE clause of an object's row, with markers if statements are cached.
    std::wstring KeyCondition(const WPersistentObject& object) const;
    /// Binds the object's key to two markers. Bind results are ignored: SQLExecute reports the error.
    void BindKey(void* statement, int firstMarker, const WPersistentObject& object);
    static void BindFirstColumn(void* statement, std::int32_t* target, std::intptr_t* indicator);
    /// Fetches a row. Returns true if there was one.
    static bool FetchRow(void* statement);

    /// Creates the table and the index of the object's class if they do not exist.
    void CreateTable(const WPersistentObject& object);
    /// Adds columns to the table of the object's class.
    void AlterTable(const WPersistentObject& object, const std::vector<column>& newColumns);
    /// Drops the table of the object's class. Does nothing during a transaction.
    void DropTable(const WPersistentObject& object);
    /// Renames a table. Does nothing during a transaction.
    void RenameTable(const WPersistentObject& object, const std::wstring& oldName,
                     const std::wstring& newName);
    /// Returns the table's entry. Reads the tables again if it is missing: another connection may have
    /// created it.
    tableMap::iterator FindTable(const std::wstring& name);

    /// Runs an operation that has one pass. `runAgain` calls the operation again, in that pass.
    template <class RunOne, class RunAgain>
    void RunDataPass(RunOne runOne, RunAgain runAgain);
    /// Runs a statement without a result. Does nothing for an empty text.
    void Send(const std::wstring& text);
    /// Runs while another failure is being reported; a failing rollback is only traced.
    void RollBack() noexcept;
    /// Deletes the stored components, so that removed ones leave the database. A failure is only traced.
    void DeleteOldComponents(WPersistentObject& object);
    /// Writes the text of the INSERT or UPDATE to the query stream.
    void ComposeStatement(const WPersistentObject& object, bool isUpdate);
    /// Returns the cached statement that writes the current values.
    void* ChangeFor(const WPersistentObject& object, bool isUpdate);
    /// Returns the cached statement that selects the columns by name: other programs may add or move columns.
    const KeptTable& SelectionFor(const WPersistentObject& object, const std::vector<column>& columns);
    void BindParameters(const WPersistentObject& object, bool isUpdate);
    /// Sets the value's driverForm if the driver requires another form.
    void MakeDriverForm(parameter& value) const;
    bool BindParameter(parameter& value);
    void ExecuteStatement(const WPersistentObject& object);
    /// Sends the long values of an executing statement.
    void SendDataAtExecution(const WPersistentObject& object);
    /// Resets the statement for its next use and throws WNESerializerError.
    [[noreturn]] void FailStatement(const std::wstring& text);
    /// Returns the value of a column in the fetched row. Returns null for a column of an unknown type and for
    /// binary data that are NULL.
    std::unique_ptr<parameter> FetchValue(const WPersistentObject& object, parameter::e_kind kind,
                                          const std::wstring& name, std::int32_t ordinal);
    std::int16_t FetchFixed(parameter& value);
    std::int16_t FetchBinary(parameter& value, bool* isThere);
    std::int16_t FetchWholeBinary(parameter& value, bool* isThere);
    std::int16_t FetchText(parameter& value);
    /// Fetches a long value in pieces; each ends with a NUL of `endUnit` bytes.
    std::int16_t FetchPieces(const parameter& value, std::int16_t cType, std::size_t endUnit,
                             std::string* bytes, bool* isNull);
    static void SortParameters(WPersistentObject& object, const tableMap& tables, parameterList& parameters);
    static void RemoveAllParameters(parameterList& parameters);

    /// The forms of values in the text of the checksum, the same on all systems.
    void AddToCheckSum(long value);
    void AddToCheckSum(double value);
    void AddToCheckSum(const std::wstring& value);
    bool IsSchemaPass() const { return m_ePass == passSchema; }
    std::wstring ClassAndColumn(const std::wstring& key) const;
    const parameter* FindParameter(const std::wstring& key) const;
    const parameter& DemandParameter(const std::wstring& key, const wchar_t* text) const;
    void AddParameter(parameter::e_kind kind, const std::wstring& key, const void* data, std::size_t length);
    /// Copies a value of fixed size. Returns false if it is NULL. Throws WNESerializerError if the column is
    /// missing.
    template <class Value>
    bool TakeFixed(const std::wstring& key, const wchar_t* text, Value* value) const;
    /// The stored form of an array's element: 32 bits for long, a byte for flags.
    template <class Element>
    using Stored =
        std::conditional_t<std::is_same_v<Element, long>, std::int32_t,
                           std::conditional_t<std::is_same_v<Element, bool>, unsigned char, Element>>;
    void InsertBinary(const std::wstring& key, const void* data, std::size_t length);
    /// Inserts binary data from version 5.3.2.0 on: one column with a header.
    void InsertFrame(const std::wstring& key, const unsigned char* data, std::size_t length);
    /// Inserts binary data below version 5.3.2.0: columns for the stored size, the size and the data.
    void InsertOldBinary(const std::wstring& key, const unsigned char* data, std::size_t length);
    std::vector<unsigned char> RetrieveBinary(const std::wstring& key);
    std::vector<unsigned char> RetrieveFrame(const std::wstring& key);
    std::vector<unsigned char> RetrieveOldBinary(const std::wstring& key);
    void AddOldCheckSum(unsigned char* data, std::size_t length);
    template <class Element>
    void InsertElements(const std::wstring& key, const Element* data, std::size_t count);
    template <class Element>
    void InsertArray(const std::wstring& key, const Element* data, long count);
    template <class Element>
    std::vector<Stored<Element>> RetrieveElements(const std::wstring& key);
    template <class Element>
    void RetrieveArray(const std::wstring& key, Element*& data, long& count);
    template <class Element>
    void RetrieveVector(const std::wstring& key, std::vector<Element>& values);
    void InsertStrings(const std::wstring& key, const std::wstring* strings, std::size_t count);
    void InsertStrings(const std::wstring& key, const std::string* strings, std::size_t count);
    void RetrieveStrings(const std::wstring& key, std::vector<std::wstring>& values);
    void RetrieveStrings(const std::wstring& key, std::vector<std::string>& values);
    template <class Text>
    void RetrieveStringArray(const std::wstring& key, Text*& data, long& count);

    e_pass m_ePass = passNone;
    e_connection m_eConnection = connectionNone;
    /// The driver fetches columns in any order.
    bool m_bAnyOrder = false;
    /// ODBC handles: environment, connection, and statements for rows and for the schema.
    void* m_hEnv = nullptr;
    void* m_hDbc = nullptr;
    void* m_hStmt = nullptr;
    void* m_hStmtSchema = nullptr;
    /// The statement of the current object: m_hStmt or a cached one.
    void* m_hRow = nullptr;
    /// The cached statements, by their texts.
    std::map<std::wstring, void*> m_KeptStatements;
    /// The cached statements of the tables, by their names.
    std::map<std::wstring, KeptTable> m_KeptTables;
    /// The numbers to which the markers of a key are bound.
    std::int64_t m_aKey[2] = {};
    /// The schema whose tables are used; empty: all that the driver lists.
    std::wstring m_sSchema;
    /// The object of the current call, not owned; null outside Read, Write and Delete.
    WPersistentObject* m_pCurrentObject = nullptr;
    /// The object whose class name m_sNameOfClass caches.
    const WPersistentObject* m_pNamedObject = nullptr;
    std::wstring m_sNameOfClass;
    /// Class and numbers of the last object, for messages.
    std::wstring m_sLastClass = L"Unknown";
    long m_nLastGroup = 0;
    long m_nLastObject = 0;
    tableMap m_Tables;
    /// The columns that the first pass found missing.
    std::vector<column> m_NewColumns;
    std::wstringstream m_QueryStream;
    /// The text of the checksum, collected from the values.
    std::wstring m_CheckSumText;
    /// The open transaction levels, outermost first.
    std::deque<etransactionmode> m_TransactionModes;
    std::int16_t m_nDoubleType;
    std::int16_t m_nIntegerType;
    std::int16_t m_nBitType;
    /// The back-end's names of types, by their ODBC numbers.
    std::map<std::int16_t, std::wstring> m_DataTypes;
    parameterList m_Parameters;
    std::wstring m_sUser;
    std::wstring m_sPassword;
    std::wstring m_sDataSource;
    std::unique_ptr<const SqlDialect> m_pDialect;
};

} // namespace bss

#endif
