// WDatabase: the serializer that keeps persistent objects in an ODBC database. A class is a table, an object
// a row, a serialized member a column.
//
//     bss::WDatabase database;
//     database.ConnectFile(L"", L"", L"results.db");          // or Connect(user, password, data source)
//     run.Write(&database, 0, true);                          // makes and extends the tables it needs
//     run.Read(&database, 0, true);                           // the row of run's group and object number
//
// Every table begins with RecID, m_nVersion, groupID, objectID and checkSum. The pair of group and object
// number is the key of an object. A row carries a checksum over its members, which every read tests. New
// members become new columns; the rows that are there have NULL in them.
//
// A write is two transactions: first tables and columns are made, then rows are written. Either all rows of a
// write, those of components included, are there afterwards, or none. SetTransactionMode and Transact nest:
// only the outermost level reaches the database.
//
// Failures: WNEODBCError and WNEODBCTypeNotSupported of the connection, the schema and the transactions,
// WNESerializerError of statements and values, std::runtime_error where a table can't be made or extended.
// From Read and Write of an object they arrive wrapped as its header tells.
//
// Back-ends: Microsoft Access and SQL Server, SQLite as the embedded default on Linux, PostgreSQL as the
// server (a data source of its Unicode driver; the schema is the first of the user's search path). A driver
// that is not known is spoken to as one of the first two, by whether it lets columns be fetched in any order.
// For SQLite and PostgreSQL the statements of an object are prepared once a connection and kept.
//
// Threads: one thread at a time.

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

class KRTBSS_API WDatabase : public WSerializer, private sync::WNoncopyable {
public:
    /// How the connection was made.
    enum e_connection : int { connectionNone = 0, connectionDataSource = 1, connectionFile = 2 };
    enum etransactionmode : int { transactionManual = 0, transactionAuto = 1 };
    enum etransaction : int { transactionCommit = 0, transactionRollback = 1 };

    /// One column of a table.
    class KRTBSS_API column {
    public:
        column(std::int32_t columnOrdinal, std::wstring columnName, std::wstring columnType)
            : ordinal(columnOrdinal), name(std::move(columnName)), type(std::move(columnType)) {}
        column(const column&) = default;
        column& operator=(const column&) = default;
        // No virtual destructor: the order of the virtual operations is the two comparisons.
        virtual bool operator<(const column& other) const;
        virtual bool operator>(const column& other) const;

        std::int32_t ordinal; ///< the driver's, or -1 before the column is in the table
        std::wstring name;
        std::wstring type; ///< the back-end's name of it
    };

    /// One value of the statement in progress.
    class KRTBSS_API parameter {
    public:
        /// What is not bit, character, integer, double, text, binary or GUID is skipped.
        enum e_kind : std::int32_t {
            kindNone = 0,
            kindBit = 1,
            kindBoolCharacter = 2,
            kindInteger = 3,
            kindDouble = 4,
            kindText = 5,
            kindTextToo = 6,
            kindBinary = 7,
            kindGuid = 8
        };

        /// Copies the value: 1, 1, 4, 8 bytes for the kinds from bit to double, 16 for a GUID, `length`
        /// UTF-16 code units of text, `length` bytes of binary. Null makes no data.
        parameter(e_kind parameterKind, std::wstring columnName, const void* source, std::int32_t length,
                  long objectVersion);
        parameter(const parameter&) = delete;
        parameter& operator=(const parameter&) = delete;
        virtual ~parameter();
        virtual bool operator<(const parameter& other) const;
        virtual bool operator>(const parameter& other) const;

        /// The bytes of the data: twice the length for text.
        std::size_t GetByteCount() const;

        e_kind kind;
        std::wstring name;
        std::int32_t columnIndex = -1;
        std::int16_t number = 0; ///< of the statement's marker
        std::unique_ptr<unsigned char[]> data;
        std::int32_t dataLength; ///< code units of text, bytes of all else
        std::intptr_t indicator = 0;
        std::int32_t version; ///< of the object
        /// What goes to a driver that takes the value in another form.
        std::optional<std::string> driverForm;
    };

    /// What GetMissingExperimentDirectoryInfo tells of an experiment.
    struct entryInfo {
        long group;
        std::wstring path;
        std::wstring name;
    };

    WDatabase();
    /// Disconnects.
    ~WDatabase() noexcept override;

    /// Connects to a named data source. WNEODBCError if it can't be had, WNEODBCTypeNotSupported if it lacks
    /// a type that is needed; then there is no connection.
    void Connect(const std::wstring& user, const std::wstring& password, const std::wstring& dataSource);
    /// Opens a database file: by the Access driver, or by SQLite's where the name ends in .db or .sqlite, and
    /// on Linux for all but .mdb. Failures as of Connect.
    void ConnectFile(const std::wstring& user, const std::wstring& password, const std::wstring& filePath);
    /// Harmless without a connection, too.
    void Disconnect();
    bool IsConnected() const { return m_eConnection != connectionNone; }
    e_connection GetConnectionType() const { return m_eConnection; }
    const std::wstring& GetDataSource() const { return m_sDataSource; }
    /// As given to the connect call.
    const std::wstring& GetUserID() const { return m_sUser; }
    /// The driver's name of the user; empty without a connection or without a name.
    std::wstring GetUser() const;
    /// The driver's name of the database. For a data source of another back-end than "access" the extension
    /// is replaced by ".mdb".
    std::wstring GetDatabasePath() const;

    /// In the picture of the schema that was taken at connect and is kept since; no call to the database.
    bool HasTable(const std::wstring& table) const;
    bool HasColumn(const std::wstring& table, const std::wstring& column) const;

    /// Opens a level. The outermost one switches the connection's autocommit.
    void SetTransactionMode(etransactionmode mode);
    /// Closes a level. The outermost one commits or rolls back all of them; without a level nothing is done.
    void Transact(etransaction kind);

    // Queries. Tables that are not there, and no rows, give 0 or the empty answer; other failures are
    // WNESerializerError.
    long GetRowCount(const std::wstring& table);
    /// Column 1 of the last row.
    long GetLongFromQuery(const std::wstring& query);
    /// Column 1 of all rows, and that of the last row (or 0) once more, as it always has.
    std::vector<long> GetVectorOfLongsFromQuery(const std::wstring& query);
    long GetDirectoryEntryCount(const std::wstring& className);
    /// The groups of a table's rows, in the form of GetVectorOfLongsFromQuery.
    std::vector<long> GetEntryIDs(const std::wstring& table);
    /// Experiments without a directory entry, the last one twice, as it always has.
    std::vector<entryInfo> GetMissingExperimentDirectoryInfo();

    /// Whether the object's row is there, written by a version above 5.0.0.0; its version goes to `*pVersion`
    /// if that is not null.
    bool Exists(const WPersistentObject& object, long* pVersion);

    // The entry points of the frame, for WPersistentObject.
    void Read(WPersistentObject& object, bool bDeep) override;
    void Write(WPersistentObject& object, bool bDeep) override;
    using WSerializer::Delete;
    void Delete(WPersistentObject& object, bool bDeep) override;

    void Insert(const std::wstring& key, const std::vector<std::wstring>& values) override;
    void Insert(const std::wstring& key, const std::vector<bool>& values) override;
    void Insert(const std::wstring& key, const std::vector<double>& values) override;
    void Insert(const std::wstring& key, const std::vector<long>& values) override;
    void Insert(const std::wstring& key, const std::vector<int>& values) override;
    void Insert(const std::wstring& key, const std::wstring& value) override;
    void Insert(const std::wstring& key, const std::string& value) override;
    void Insert(const std::wstring& key, const std::wstring* const data, long count) override;
    void Insert(const std::wstring& key, const std::string* const data, long count) override;
    void Insert(const std::wstring& key, const double* const data, long count) override;
    void Insert(const std::wstring& key, const float* const data, long count) override;
    /// Each of 32 bits; WNESerializerError names the column of one that has more.
    void Insert(const std::wstring& key, const long* const data, long count) override;
    void Insert(const std::wstring& key, const unsigned char* const data, long count) override;
    void Insert(const std::wstring& key, struct tm value) override;
    void Insert(const std::wstring& key, GUID value) override;
    void Insert(const std::wstring& key, double value) override;
    void Insert(const std::wstring& key, float value) override;
    /// Of 32 bits, as above.
    void Insert(const std::wstring& key, long value) override;
    void Insert(const std::wstring& key, short value) override;
    void Insert(const std::wstring& key, bool value) override;
    /// From version 5.3.2.0 on the values keep their precision.
    void InsertF(const std::wstring& key, const std::vector<double>& values) override;

    void Retrieve(const std::wstring& key, std::vector<std::wstring>& values) override;
    void Retrieve(const std::wstring& key, std::vector<bool>& values) override;
    void Retrieve(const std::wstring& key, std::vector<double>& values) override;
    void Retrieve(const std::wstring& key, std::vector<long>& values) override;
    void Retrieve(const std::wstring& key, std::vector<int>& values) override;
    /// A text that is a single blank comes back empty.
    void Retrieve(const std::wstring& key, std::wstring& value) override;
    void Retrieve(const std::wstring& key, std::string& value) override;
    void Retrieve(const std::wstring& key, std::wstring*& data, long& count) override;
    void Retrieve(const std::wstring& key, std::string*& data, long& count) override;
    void Retrieve(const std::wstring& key, double*& data, long& count) override;
    void Retrieve(const std::wstring& key, float*& data, long& count) override;
    void Retrieve(const std::wstring& key, long*& data, long& count) override;
    void Retrieve(const std::wstring& key, unsigned char*& data, long& count) override;
    /// The day of week and of year stay.
    void Retrieve(const std::wstring& key, struct tm& value) override;
    void Retrieve(const std::wstring& key, GUID& value) override;
    void Retrieve(const std::wstring& key, double& value) override;
    void Retrieve(const std::wstring& key, float& value) override;
    void Retrieve(const std::wstring& key, long& value) override;
    void Retrieve(const std::wstring& key, short& value) override;
    void Retrieve(const std::wstring& key, bool& value) override;
    void RetrieveF(const std::wstring& key, std::vector<double>& values) override;

    virtual void Insert(const std::wstring& key, const short* const data, long count);
    virtual void Insert(const std::wstring& key, const int* const data, long count);
    virtual void Insert(const std::wstring& key, const bool* const data, long count);
    virtual void Insert(const std::wstring& key, const std::vector<short>& values);
    virtual void Insert(const std::wstring& key, const std::vector<float>& values);
    virtual void Insert(const std::wstring& key, const std::vector<std::string>& values);
    virtual void Insert(const std::wstring& key, int value);
    virtual void Retrieve(const std::wstring& key, short*& data, long& count);
    virtual void Retrieve(const std::wstring& key, int*& data, long& count);
    virtual void Retrieve(const std::wstring& key, bool*& data, long& count);
    virtual void Retrieve(const std::wstring& key, std::vector<short>& values);
    virtual void Retrieve(const std::wstring& key, std::vector<float>& values);
    virtual void Retrieve(const std::wstring& key, std::vector<std::string>& values);
    virtual void Retrieve(const std::wstring& key, int& value);

protected:
    using tableMap = std::map<std::wstring, std::vector<column>>;
    using tableIterator = tableMap::const_iterator;
    using parameterList = std::list<std::unique_ptr<parameter>>;

    void CheckDataTypes();
    void MapDataTypes();
    void MapTables();
    void MapColumns();
    /// The 1-based position of a column in the current object's table, where it is or will be; -1 without the
    /// table.
    int CreateColumn(const std::wstring& name, const std::wstring& typeName);
    /// All diagnostic records of a handle.
    std::wstring GetErrorMsg(void* handle, short handleType) const;
    void SendQuery();
    void SendQuery(void* statement);
    void ClearQueryStream();
    void ClearCheckSumStream();
    void SendSelectQuery(const std::wstring& columns, void* statement);
    std::wstring CalculateCheckSum(const std::wstring& text) const;
    /// -1 if the current object's table has no such column, 1 if the table is not known.
    int GetColumnIndexFromName(const std::wstring& name) const;
    static int GetColumnIndexFromName(tableIterator table, const std::wstring& name);

    /// One object and, if deep, its components.
    void WriteObject(WPersistentObject& object, bool bDeep);
    void ReadObject(WPersistentObject& object, bool bDeep);
    void DeleteObject(WPersistentObject& object, bool bDeep);
    void StartInsertion(WPersistentObject& object) override;
    void FinishInsertion(WPersistentObject& object) override;
    void StartRetrieval(WPersistentObject& object) override;
    void FinishRetrieval() override;
    void FinishRetrieval(WPersistentObject& object);

    /// "YYYY-MM-DD HH:MM:SS"
    static std::wstring GetTimeString(struct tm time);
    /// Day of week and of year stay.
    static void GetTimeStructure(const std::wstring& text, struct tm& time);
    /// `out` has room for 2 * length + 1 bytes; the count without the closing 0.
    static long EscapeString(unsigned char* out, const unsigned char* in, long length);

private:
    enum e_pass : int { passNone = 0, passSchema = 1, passData = 2 };
    class Statement;
    class Reset;
    class CurrentObject;

    /// The kept statements of a table, so that their texts need not be made to find them; null before.
    struct KeptTable {
        /// For values of these columns.
        struct Change {
            std::vector<std::wstring> columns;
            void* statement = nullptr;
        };
        struct Selected {
            parameter::e_kind kind;
            std::wstring name;
            std::int32_t ordinal; ///< in the selection
        };
        void* exists = nullptr;
        void* select = nullptr;
        std::vector<Selected> selected;
        Change insert;
        Change update;
    };

    [[noreturn]] void FailToConnect(const wchar_t* debugText, void* handle, short handleType);
    void OpenConnection(bool isFile);
    void ReadCapabilities(bool isFile);
    void ReadSchema();
    std::wstring GetInfoText(std::uint16_t what, std::size_t room) const;
    std::wstring NameOfCurrentClass() const;
    std::wstring NameOfClass(const WPersistentObject& object) const;
    tableIterator CurrentTable() const;
    std::wstring GetPosition(const WPersistentObject* object, const std::wstring& column = {}) const;
    void SetAutoCommit(etransactionmode mode);
    /// Runs a query on a statement of its own; `read` takes the rows, and throws std::runtime_error where it
    /// can't.
    void RunQuery(const std::wstring& query, const std::function<void(void* statement)>& read);
    void ReadAnswer(std::int16_t result, void* statement,
                    const std::function<void(void* statement)>& read) const;
    /// The same on a kept statement for an object's row.
    void RunKeyQuery(void* statement, const WPersistentObject& object,
                     const std::function<void(void* statement)>& read);
    void RetrieveRow(const WPersistentObject& object, const std::vector<column>& columns);
    void DemandNoError(std::int16_t result, void* statement) const;
    void* StatementFor(const std::wstring& text);
    void DropKeptStatements();
    std::wstring Quoted(const std::wstring& name) const;
    std::wstring KeyCondition(const WPersistentObject& object) const;
    void BindKey(void* statement, int firstMarker, const WPersistentObject& object);
    static void BindFirstColumn(void* statement, std::int32_t* target, std::intptr_t* indicator);
    static bool FetchRow(void* statement);

    void CreateTable(const WPersistentObject& object);
    void AlterTable(const WPersistentObject& object, const std::vector<column>& newColumns);
    void DropTable(const WPersistentObject& object);
    void RenameTable(const WPersistentObject& object, const std::wstring& oldName,
                     const std::wstring& newName);
    /// The table's entry; when it is missed the tables are asked for once more.
    tableMap::iterator FindTable(const std::wstring& name);

    template <class RunOne, class RunAgain>
    void RunDataPass(RunOne runOne, RunAgain runAgain);
    void Send(const std::wstring& text);
    void RollBack() noexcept;
    void DeleteOldComponents(WPersistentObject& object);
    void ComposeStatement(const WPersistentObject& object, bool isUpdate);
    void* ChangeFor(const WPersistentObject& object, bool isUpdate);
    const KeptTable& SelectionFor(const WPersistentObject& object, const std::vector<column>& columns);
    void BindParameters(const WPersistentObject& object, bool isUpdate);
    void MakeDriverForm(parameter& value) const;
    bool BindParameter(parameter& value);
    void ExecuteStatement(const WPersistentObject& object);
    void SendDataAtExecution(const WPersistentObject& object);
    [[noreturn]] void FailStatement(const std::wstring& text);
    std::unique_ptr<parameter> FetchValue(const WPersistentObject& object, parameter::e_kind kind,
                                          const std::wstring& name, std::int32_t ordinal);
    std::int16_t FetchFixed(parameter& value);
    std::int16_t FetchBinary(parameter& value, bool* isThere);
    std::int16_t FetchWholeBinary(parameter& value, bool* isThere);
    std::int16_t FetchText(parameter& value);
    std::int16_t FetchPieces(const parameter& value, std::int16_t cType, std::size_t endUnit,
                             std::string* bytes, bool* isNull);
    static void SortParameters(WPersistentObject& object, const tableMap& tables, parameterList& parameters);
    static void RemoveAllParameters(parameterList& parameters);

    // The forms that values have in the checksum's text, the same on all systems.
    void AddToCheckSum(long value);
    void AddToCheckSum(double value);
    void AddToCheckSum(const std::wstring& value);
    bool IsSchemaPass() const { return m_ePass == passSchema; }
    std::wstring ClassAndColumn(const std::wstring& key) const;
    const parameter* FindParameter(const std::wstring& key) const;
    const parameter& DemandParameter(const std::wstring& key, const wchar_t* text) const;
    void AddParameter(parameter::e_kind kind, const std::wstring& key, const void* data, std::size_t length);
    template <class Value>
    bool TakeFixed(const std::wstring& key, const wchar_t* text, Value* value) const;
    /// As an element of an array is stored: longs have 32 bits, flags a byte.
    template <class Element>
    using Stored =
        std::conditional_t<std::is_same_v<Element, long>, std::int32_t,
                           std::conditional_t<std::is_same_v<Element, bool>, unsigned char, Element>>;
    void InsertBinary(const std::wstring& key, const void* data, std::size_t length);
    void InsertFrame(const std::wstring& key, const unsigned char* data, std::size_t length);
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
    bool m_bAnyOrder = false;
    void* m_hEnv = nullptr;
    void* m_hDbc = nullptr;
    void* m_hStmt = nullptr;
    void* m_hStmtSchema = nullptr;
    void* m_hRow = nullptr; ///< of the object in hand: m_hStmt or one of the kept ones
    std::map<std::wstring, void*> m_KeptStatements;    ///< by their texts
    std::map<std::wstring, KeptTable> m_KeptTables;    ///< by their names
    std::int64_t m_aKey[2] = {};                       ///< what the markers of a key are bound to
    std::wstring m_sSchema;                            ///< whose tables are meant; empty: all
    WPersistentObject* m_pCurrentObject = nullptr;     ///< not owned; null outside Read, Write and Delete
    const WPersistentObject* m_pNamedObject = nullptr; ///< whose class m_sNameOfClass names
    std::wstring m_sNameOfClass;
    /// Class and numbers of the last one, for messages.
    std::wstring m_sLastClass = L"Unknown";
    long m_nLastGroup = 0;
    long m_nLastObject = 0;
    tableMap m_Tables;
    std::vector<column> m_NewColumns;
    std::wstringstream m_QueryStream;
    std::wstring m_CheckSumText; ///< what the checksum is taken over, put together as values pass
    std::deque<etransactionmode> m_TransactionModes;
    std::int16_t m_nDoubleType;
    std::int16_t m_nIntegerType;
    std::int16_t m_nBitType;
    std::map<std::int16_t, std::wstring> m_DataTypes;
    parameterList m_Parameters;
    std::wstring m_sUser;
    std::wstring m_sPassword;
    std::wstring m_sDataSource;
    std::unique_ptr<const SqlDialect> m_pDialect;
};

} // namespace bss

#endif
