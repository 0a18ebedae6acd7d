// Stores objects in an SQLite file, lists and reads them, and finds a row that another program has changed.

#include "bss/exception/WNestedException.h"
#include "bss/serial/WPersistentObject.h"
#include "bss/serial/WVersion.h"
#include "bss/serial/database/WDatabase.h"

#include <cstdio>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace {

// One row of the table "Run"; its key is the pair of group and object number.
class Run : public bss::WPersistentObject {
public:
    explicit Run(long number) : WPersistentObject(number, 1, bss::WVersion(5, 3, 2, 0)) {}

    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        Member(bRead, L"sample", sample);
        Member(bRead, L"angle", angle);
        Member(bRead, L"counts", counts);
    }

    std::wstring sample;
    double angle = 90.0;
    std::vector<long> counts;

private:
    template <class Value>
    void Member(bool bRead, const wchar_t* label, Value& value) {
        bRead ? m_pSerializer->Retrieve(label, value) : m_pSerializer->Insert(label, value);
    }
};

} // namespace

int main() {
    const std::filesystem::path file = "object_store_example.db";
    std::filesystem::remove(file);
    try {
        bss::WDatabase database;
        database.ConnectFile(L"", L"",
                             file.wstring()); // the file, table and columns are made when they are needed
        for (long number = 1; number <= 3; ++number) {
            Run run(number);
            run.sample = number < 3 ? L"toluene" : L"water";
            run.counts.assign(static_cast<std::size_t>(number), 1000 * number);
            run.Write(&database, 0, true);
        }
        Run changed(2);
        changed.sample = L"ethanol"; // the same key: the row is replaced
        changed.Write(&database, 0, true);

        const std::vector<long> groups = database.GetEntryIDs(L"Run"); // the last one twice
        for (const long number : std::set<long>(groups.begin(), groups.end())) {
            Run run(number);
            run.Read(&database, 0, true); // tests the checksum of the row
            std::printf("run %ld: %ls at %g degrees, %zu counts\n", number, run.sample.c_str(), run.angle,
                        run.counts.size());
        }
        Run(1).Delete(&database, 0, true);
        Run missing(1);
        std::printf("%ld rows; run 1 is %s\n", database.GetRowCount(L"Run"),
                    database.Exists(missing, nullptr) ? "there" : "gone");
        missing.Read(&database, 0, true);
    } catch (const bss::WNestedException& failure) {
        const std::wstring text = failure.AsString(true);
        std::printf("%ls\n", text.substr(0, text.find(L'\n')).c_str());
    }
    std::filesystem::remove(file);
}
