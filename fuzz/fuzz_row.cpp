// Reads a row in which another program has put any bytes into one column. Whatever they are, only the
// failures that are promised come out.
//
// The first byte chooses the column, the second the version of the row; the others are what goes into it.

#include "bss/exception/WNestedException.h"
#include "bss/serial/WPersistentObject.h"
#include "bss/serial/WVersion.h"
#include "bss/serial/database/WDatabase.h"

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <string>
#include <vector>

namespace {

constexpr const wchar_t* kColumns[] = {L"longs",  L"narrows", L"narrow", L"flags",
                                       L"series", L"wides",   L"time",   L"id"};
constexpr std::size_t kBinary = 5; // so many of them

class Row : public bss::WPersistentObject {
public:
    Row() : WPersistentObject(1, 2, bss::WVersion(5, 3, 2, 0)) {}

    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        auto& database = static_cast<bss::WDatabase&>(*m_pSerializer);
        const auto member = [&](const wchar_t* key, auto& value) {
            bRead ? database.Retrieve(key, value) : database.Insert(key, value);
        };
        member(kColumns[0], m_longs);
        member(kColumns[1], m_narrows);
        member(kColumns[2], m_narrow);
        member(kColumns[3], m_flags);
        bRead ? database.RetrieveF(kColumns[4], m_series) : database.InsertF(kColumns[4], m_series);
        member(kColumns[5], m_wides);
        member(kColumns[6], m_time);
        member(kColumns[7], m_id);
    }

    bool IsSame(const Row& other) const {
        return m_longs == other.m_longs && m_narrows == other.m_narrows && m_narrow == other.m_narrow &&
               m_flags == other.m_flags && m_series == other.m_series && m_wides == other.m_wides &&
               m_time.tm_year == other.m_time.tm_year && m_time.tm_sec == other.m_time.tm_sec &&
               m_id == other.m_id;
    }

private:
    std::vector<long> m_longs = std::vector<long>(300, 7); // compressed
    std::vector<std::string> m_narrows = {"a", "", "bc"};
    std::string m_narrow = "d";
    std::vector<bool> m_flags = {true, false};
    std::vector<double> m_series = {0.5};
    std::vector<std::wstring> m_wides = {L"e", L"f"};
    struct tm m_time {};
    GUID m_id{};
};

std::wstring Hex(const std::uint8_t* data, std::size_t size) {
    std::wstring text;
    for (std::size_t i = 0; i < size; ++i) {
        text += L"0123456789abcdef"[data[i] >> 4];
        text += L"0123456789abcdef"[data[i] & 15];
    }
    return text;
}

void Send(bss::WDatabase& database, const std::wstring& statement) {
    try {
        database.GetLongFromQuery(statement);
    } catch (const bss::WNestedException&) { // NOLINT(bugprone-empty-catch): it has no rows, which is told
    }
}

bss::WDatabase& Database() {
    static bss::WDatabase database;
    if (!database.IsConnected()) {
        database.ConnectFile(L"", L"", L":memory:");
    }
    return database;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t head = 2;
    if (size < head) {
        return 0;
    }
    const std::size_t column = data[0] % std::size(kColumns);
    const bool isOld = data[1] % 2 != 0;
    bss::WDatabase& database = Database();
    Row row;
    row.Write(&database, isOld ? bss::WVersion::GetVersion(5, 3, 0, 8) : 0, true);
    const std::wstring bytes = L"x'" + Hex(data + head, size - head) + L"'";
    std::wstring change = kColumns[column];
    change += L" = " + (column < kBinary ? bytes : L"CAST(" + bytes + L" AS TEXT)");
    if (isOld && column < kBinary) { // of another length it would not be looked at
        change += L", ";
        change += kColumns[column];
        change += L"L = " + std::to_wstring(size - head);
    }
    Send(database, L"UPDATE Row SET " + change);
    Row read;
    try {
        read.Read(&database, 0, true);
    } catch (const bss::WNestedException&) {
        return 0;
    }
    // What passes the checksum is what was written.
    if (!read.IsSame(row)) {
        std::abort();
    }
    return 0;
}
