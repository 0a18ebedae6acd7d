#include "bss/serial/database/private/SqlDialect.h"

#include "bss/exception/WExceptionCatalogue.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <cwctype>
#include <initializer_list>
#include <string_view>

namespace bss {

namespace {

namespace odbc = krtpal::odbc;

// The kind of a database file whose name has no known extension.
constexpr bool kFilesAreAccess = KRTBSS_ACCESS_FILES;

bool EndsWith(const std::wstring& path, std::wstring_view extension) {
    return path.size() >= extension.size() &&
           std::equal(extension.begin(), extension.end(), path.end() - static_cast<long>(extension.size()),
                      [](wchar_t a, wchar_t b) {
                          return a == static_cast<wchar_t>(std::towlower(static_cast<wint_t>(b)));
                      });
}

bool IsAccessFile(const std::wstring& path) {
    return kFilesAreAccess ? !EndsWith(path, L".db") && !EndsWith(path, L".sqlite") : EndsWith(path, L".mdb");
}

// On Linux SQLite's driver has no wide-text functions, and the driver manager would truncate characters
// outside ASCII.
std::wstring SqliteName(const std::wstring& path) {
    const bool isAscii = std::all_of(path.begin(), path.end(), [](wchar_t c) { return c > 0 && c < 0x80; });
    return kFilesAreAccess || isAscii ? path : SqlDialect::SqliteUri(path);
}

std::wstring InQuotes(const std::wstring& name) {
    std::wstring quoted = L"\"";
    for (const wchar_t c : name) {
        quoted += c == L'"' ? std::wstring(L"\"\"") : std::wstring(1, c);
    }
    return quoted + L"\"";
}

struct TypeName {
    const wchar_t* name;
    WDatabase::parameter::e_kind kind;
};

WDatabase::parameter::e_kind KindIn(const std::wstring& typeName, std::initializer_list<TypeName> types) {
    const auto* const type =
        std::find_if(types.begin(), types.end(), [&](const TypeName& each) { return each.name == typeName; });
    return type == types.end() ? WDatabase::parameter::kindNone : type->kind;
}

class AccessDialect : public SqlDialect {
public:
    std::wstring CreateIndex(const std::wstring& table) const override {
        return L"CREATE UNIQUE INDEX [groupID_objectID] ON " + table + L" ([groupID] ASC, [objectID] ASC)";
    }
};

class SqlServerDialect : public SqlDialect {
public:
    std::wstring CreateIndex(const std::wstring& table) const override {
        return L"CREATE UNIQUE NONCLUSTERED INDEX [groupID_objectID] ON [" + table +
               L"] ([groupID] ASC, [objectID] ASC) ON [PRIMARY]";
    }
    std::wstring WriteHint() const override { return L" WITH (ROWLOCK) "; }
    std::wstring ReadHint() const override { return L" WITH (NOLOCK) "; }

protected:
    std::wstring TablePrefix() const override { return L"[dbo]."; }
};

// The driver accepts any type name and returns it as written. It reports no type for long wide text and GUID.
// It damages characters beyond U+FFFF in wide text.
class SqliteDialect : public SqlDialect {
public:
    std::wstring CreateIndex(const std::wstring& table) const override {
        // All indices of a database share one name space.
        return L"CREATE UNIQUE INDEX " + Quoted(table + L"_groupID_objectID") + L" ON " + Quoted(table) +
               L" ([groupID] ASC, [objectID] ASC)";
    }
    // An unknown name in brackets is an error; in quotes it would be a text.
    std::wstring Quoted(const std::wstring& name) const override {
        return name.find(L']') == std::wstring::npos ? L"[" + name + L"]" : InQuotes(name);
    }
    std::vector<std::wstring> AddColumns(const std::wstring& table,
                                         const std::vector<column>& columns) const override {
        std::vector<std::wstring> statements;
        for (const column& each : columns) {
            const std::vector<std::wstring> one = SqlDialect::AddColumns(table, {each});
            statements.insert(statements.end(), one.begin(), one.end());
        }
        return statements;
    }
    // The driver rounds floating point to 15 digits, but returns text with any number of digits.
    std::wstring Selected(const std::wstring& columnName, parameter::e_kind kind) const override {
        const std::wstring name = Quoted(columnName);
        return kind == parameter::kindDouble
                   ? L"CASE typeof(" + name + L") WHEN 'real' THEN printf('%!.20g', " + name + L") ELSE " +
                         name + L" END"
                   : name;
    }
    std::wstring NameOfType(std::int16_t sqlType) const override {
        return sqlType == odbc::kWLongVarChar ? L"LONGCHAR" : sqlType == odbc::kGuid ? L"GUID" : L"";
    }
    bool HasTypeNames() const override { return true; }
    parameter::e_kind KindOfType(const std::wstring& typeName) const override {
        return typeName == L"integer" ? parameter::kindInteger : SqlDialect::KindOfType(typeName);
    }
    // Two processes that have read would deadlock when both begin to write. SQL has no statement for the lock
    // inside a transaction; this one starts a write and changes nothing.
    std::wstring LockForWriting() const override { return L"PRAGMA incremental_vacuum(1)"; }
    e_text GetTextForm() const override { return textEscapedUtf8; }
    // SQLite stores NULL for NaN and 0 for -0. Texts are stored unchanged, and the driver converts them to
    // the numbers.
    std::string FormOfNumber(double number) const override {
        return std::isnan(number) ? "nan" : number == 0.0 && std::signbit(number) ? "-0x0" : "";
    }
    bool HasGuidText() const override { return true; }
    bool KeepsStatements() const override { return true; }
};

// The server folds names without quotes to lower case. It rejects text with a NUL or an unpaired surrogate.
class PostgreSqlDialect : public SqlDialect {
public:
    std::wstring CreateIndex(const std::wstring& table) const override {
        // All tables and indices of a schema share one name space.
        return L"CREATE UNIQUE INDEX " + Quoted(table + L"_groupID_objectID") + L" ON " + Quoted(table) +
               L" (\"groupID\", \"objectID\")";
    }
    std::wstring Quoted(const std::wstring& name) const override { return InQuotes(name); }
    std::wstring SchemaQuery() const override { return L"SELECT current_schema()"; }
    bool HasTypeNames() const override { return true; }
    parameter::e_kind KindOfType(const std::wstring& typeName) const override {
        return KindIn(typeName, {{L"bool", parameter::kindBit},
                                 {L"int4", parameter::kindInteger},
                                 {L"float8", parameter::kindDouble},
                                 {L"text", parameter::kindText},
                                 {L"bytea", parameter::kindBinary},
                                 {L"uuid", parameter::kindGuid}});
    }
    std::wstring FixStateForReading() const override {
        return L"SET TRANSACTION ISOLATION LEVEL REPEATABLE READ";
    }
    e_text GetTextForm() const override { return textEscapedUtf16; }
    bool KeepsStatements() const override { return true; }

protected:
    std::wstring AddClause() const override { return L"ADD "; }
};

constexpr char16_t kEscapeMark = 0xFFFE;
constexpr std::u16string_view kDigits = u"0123456789abcdef";

bool IsHighHalf(char16_t unit) {
    return (unit & 0xFC00) == 0xD800;
}

bool IsLowHalf(char16_t unit) {
    return (unit & 0xFC00) == 0xDC00;
}

bool NeedsEscape(krtpal::Utf16View units) {
    for (std::size_t i = 0; i < units.size(); ++i) {
        const auto unit = static_cast<char16_t>(units[i]);
        const bool hasPair =
            IsHighHalf(unit) && i + 1 < units.size() && IsLowHalf(static_cast<char16_t>(units[i + 1]));
        if (unit == 0 || (IsHighHalf(unit) && !hasPair) || IsLowHalf(unit)) {
            return true;
        }
        i += hasPair ? 1 : 0;
    }
    return !units.empty() && static_cast<char16_t>(units[0]) == kEscapeMark;
}

// Returns the value of a hexadecimal digit, 0 for any other character.
unsigned DigitValue(char16_t c) {
    const std::size_t value = kDigits.find(c);
    return value == std::u16string_view::npos ? 0 : static_cast<unsigned>(value);
}

} // namespace

SqlDialect::~SqlDialect() = default;

std::wstring SqlDialect::FileConnection(const std::wstring& path, const std::wstring& user,
                                        const std::wstring& password) {
    if (IsAccessFile(path)) {
        return L"APP=vorin.exe;DRIVER={Microsoft Access Driver (*.mdb)};MaxBufferSize=4096;DBQ=" + path +
               L";UID=" + user + L";PWD=" + password + L";";
    }
    if (path.find(L';') != std::wstring::npos) {
        throw WNEODBCError(L"cannot open the database file '" + path +
                           L"': its driver takes no name with a semicolon");
    }
    // SyncPragma: a commit is durable before it returns. Timeout: wait for other processes. NoWCHAR: text is
    // not converted.
    return L"DRIVER={" KRTBSS_SQLITE_DRIVER L"};Database=" + SqliteName(path) +
           L";Timeout=10000;SyncPragma=FULL;FKSupport=0;LongNames=0;NoWCHAR=1;";
}

std::wstring SqlDialect::SqliteUri(const std::wstring& path) {
    std::wstring uri = L"file:";
    for (const char c : krtpal::Utf8FromWide(path)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80 && (std::isalnum(byte) != 0 || c == '/' || c == '.' || c == '-' || c == '_')) {
            uri += static_cast<wchar_t>(c);
        } else {
            uri += {L'%', L"0123456789ABCDEF"[byte >> 4], L"0123456789ABCDEF"[byte & 0xF]};
        }
    }
    return uri;
}

std::unique_ptr<const SqlDialect> SqlDialect::Make(const std::wstring& dbmsName, bool anyOrder) {
    if (dbmsName == L"SQLite") {
        return std::make_unique<SqliteDialect>();
    }
    if (dbmsName == L"PostgreSQL") {
        return std::make_unique<PostgreSqlDialect>();
    }
    if (anyOrder) {
        return std::make_unique<AccessDialect>();
    }
    return std::make_unique<SqlServerDialect>();
}

std::wstring SqlDialect::CreateTable(const std::wstring& table, const std::vector<column>& fixed) const {
    std::wstring text = L"CREATE TABLE " + TablePrefix() + Quoted(table) + L" (";
    for (const column& each : fixed) {
        const bool isFirst = &each == &fixed.front();
        text += (isFirst ? L"" : L", ") + Quoted(each.name) + L" " + each.type +
                (isFirst ? L" PRIMARY KEY" : L" NOT NULL");
    }
    return text + L")";
}

std::vector<std::wstring> SqlDialect::AddColumns(const std::wstring& table,
                                                 const std::vector<column>& columns) const {
    std::wstring list;
    for (const column& each : columns) {
        if (each.name != L"checkSum") {
            list +=
                (list.empty() ? L"" : L", " + AddClause()) + Quoted(each.name) + L" " + each.type + L" NULL";
        }
    }
    return {L"ALTER TABLE " + Quoted(table) + L" ADD " + list};
}

std::wstring SqlDialect::Quoted(const std::wstring& name) const {
    return name;
}

std::wstring SqlDialect::Selected(const std::wstring& columnName, parameter::e_kind /*kind*/) const {
    return Quoted(columnName);
}

std::wstring SqlDialect::SchemaQuery() const {
    return {};
}

std::wstring SqlDialect::WriteHint() const {
    return {};
}

std::wstring SqlDialect::ReadHint() const {
    return {};
}

std::wstring SqlDialect::NameOfType(std::int16_t /*sqlType*/) const {
    return {};
}

bool SqlDialect::HasTypeNames() const {
    return false;
}

WDatabase::parameter::e_kind SqlDialect::KindOfType(const std::wstring& typeName) const {
    return KindIn(typeName, {{L"bit", parameter::kindBit},
                             {L"BIT", parameter::kindBit},
                             {L"char", parameter::kindBoolCharacter},
                             {L"int", parameter::kindInteger},
                             {L"INTEGER", parameter::kindInteger},
                             {L"double", parameter::kindDouble},
                             {L"DOUBLE", parameter::kindDouble},
                             {L"float", parameter::kindDouble},
                             {L"LONGCHAR", parameter::kindText},
                             {L"ntext", parameter::kindText},
                             {L"string", parameter::kindText},
                             {L"image", parameter::kindBinary},
                             {L"longvarbinary", parameter::kindBinary},
                             {L"LONGBINARY", parameter::kindBinary},
                             {L"GUID", parameter::kindGuid},
                             {L"uniqueidentifier", parameter::kindGuid}});
}

std::wstring SqlDialect::LockForWriting() const {
    return {};
}

std::wstring SqlDialect::FixStateForReading() const {
    return {};
}

SqlDialect::e_text SqlDialect::GetTextForm() const {
    return textUtf16;
}

std::string SqlDialect::FormOfNumber(double /*number*/) const {
    return {};
}

bool SqlDialect::HasGuidText() const {
    return false;
}

bool SqlDialect::KeepsStatements() const {
    return false;
}

std::wstring SqlDialect::TablePrefix() const {
    return {};
}

std::wstring SqlDialect::AddClause() const {
    return {};
}

std::string EncodeText(krtpal::Utf16View units, SqlDialect::e_text form) {
    krtpal::Utf16String escaped;
    if (form != SqlDialect::textUtf16 && NeedsEscape(units)) {
        escaped += static_cast<krtpal::Utf16Unit>(kEscapeMark);
        for (const auto unit : units) {
            for (int shift = 12; shift >= 0; shift -= 4) {
                escaped +=
                    static_cast<krtpal::Utf16Unit>(kDigits[static_cast<char16_t>(unit) >> shift & 0xF]);
            }
        }
        units = escaped;
    }
    return form == SqlDialect::textEscapedUtf8
               ? krtpal::Utf8FromWide(krtpal::WideFromUtf16(units))
               : std::string(reinterpret_cast<const char*>(units.data()), units.size() * sizeof(units[0]));
}

krtpal::Utf16String DecodeText(std::string_view bytes, SqlDialect::e_text form) {
    krtpal::Utf16String text;
    if (form == SqlDialect::textEscapedUtf8) {
        text = krtpal::Utf16String(krtpal::Utf16FromWide(krtpal::WideFromUtf8(bytes)));
    } else {
        text.resize(bytes.size() / sizeof(text[0]));
        std::memcpy(text.data(), bytes.data(), text.size() * sizeof(text[0]));
    }
    if (form == SqlDialect::textUtf16 || text.empty() || static_cast<char16_t>(text[0]) != kEscapeMark) {
        return text;
    }
    krtpal::Utf16String units;
    for (std::size_t i = 1; i + 4 <= text.size(); i += 4) {
        unsigned unit = 0;
        for (std::size_t digit = i; digit < i + 4; ++digit) {
            unit = unit << 4 | DigitValue(static_cast<char16_t>(text[digit]));
        }
        units += static_cast<krtpal::Utf16Unit>(unit);
    }
    return units;
}

} // namespace bss
