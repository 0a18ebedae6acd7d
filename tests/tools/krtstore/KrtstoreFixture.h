// A database that the library has written, and the tool run on it.

#ifndef TESTS_TOOLS_KRTSTORE_KRTSTOREFIXTURE_H
#define TESTS_TOOLS_KRTSTORE_KRTSTOREFIXTURE_H

#include "bss/serial/WVersion.h"
#include "bss/serial/database/Everything.h"
#include "bss/serial/database/Fixture.h"
#include "bss/serial/database/Persistent.h"
#include "bss/serial/database/WDatabase.h"
#include "krtstore/Program.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

inline const long kOldest = bss::WVersion::GetVersion(5, 3, 0, 0);
inline const long kOld = bss::WVersion::GetVersion(5, 3, 1, 0);
inline const long kFramed = bss::WVersion::GetVersion(5, 3, 2, 0);

/// The row that the document of the format shows, and an array of texts.
class Sample : public Persistent {
public:
    explicit Sample(long object = 4) : Persistent(3, object) {}
    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        Pass(bRead, L"isOpen", isOpen);
        Pass(bRead, L"angle", angle);
        Pass(bRead, L"name", name);
        Pass(bRead, L"counts", counts);
        Pass(bRead, L"names", names);
    }
    bool isOpen = true;
    double angle = 90.5;
    std::wstring name = L"toluene";
    std::vector<long> counts = {1, 2, -1};
    std::vector<std::wstring> names = {L"one", L"", L"\"3\""};
};

struct Outcome {
    int status = 0;
    std::string output;
    std::string errors;
};

class KrtstoreTest : public DatabaseTest {
protected:
    explicit KrtstoreTest(const Backend& backend = kSqlite) : DatabaseTest(backend) {}

    std::string Database() const { return m_path.string(); }

    /// In this process: the command, the database, and what follows.
    Outcome Krtstore(const std::string& command, const std::vector<std::string>& rest = {},
                     bool hasTerminal = false) const {
        std::vector<std::string> arguments = {command, Database()};
        arguments.insert(arguments.end(), rest.begin(), rest.end());
        return RunHere(arguments, hasTerminal);
    }
    static Outcome RunHere(const std::vector<std::string>& arguments, bool hasTerminal = false) {
        std::ostringstream output;
        std::ostringstream errors;
        const int status = krtstore::Run(arguments, output, errors, hasTerminal);
        return {status, output.str(), errors.str()};
    }

    template <class Object>
    void Write(Object object, long version = 0) {
        object.Write(&m_database, version, true);
    }
    /// Objects 1, 2, 3 of class Everything, one a version, filled but for the last.
    void WriteEverything(const std::vector<long>& versions) {
        for (std::size_t i = 0; i < versions.size(); ++i) {
            Everything object(static_cast<long>(i) + 1);
            if (i + 1 < versions.size()) {
                object.Fill();
            }
            Write(object, versions[i]);
        }
    }

    static std::string BytesOf(const std::filesystem::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
};

#endif
