// Measures writing objects to a database file and reading them back, against bare ODBC, SOCI and the C
// interface of SQLite, all with prepared statements.
//
// A small object is a row of twelve columns. All contestants execute the same statements: a SELECT of the
// key, since the object may exist, and an INSERT; or a SELECT of the whole row by its key. They make the same
// number of commits of the same durability, in files with the same table and the same indices. The peers
// compute no checksum and store a text of the same length instead. Times of small objects are per object.
//
// The growth of the table is measured in one file: rows are inserted directly until the table has the
// required size, 1000 objects are written at its end, and 1000 objects scattered over the table are read.
//
//     bench_database [--benchmark_... options]

#include "bench_database.h"

#include "bss/exception/WNestedException.h"
#include "bss/serial/WPersistentObject.h"
#include "bss/serial/WVersion.h"
#include "bss/serial/database/WDatabase.h"
#include "krtpal/common/text.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <stdexcept>

namespace {

const bss::WVersion version(5, 3, 2, 0);

std::string PathOf(const std::string& name) {
    return std::string(KRTBSS_BENCH_FOLDER) + "/database-" + name + ".db";
}

// Returns objects with the numbers first, first + step, ...
std::vector<Values> MakeObjects(std::size_t count, std::int32_t group, std::int32_t first = 1,
                                std::int32_t step = 1) {
    std::vector<Values> objects(count);
    std::mt19937 generator(static_cast<unsigned>(count));
    for (std::size_t i = 0; i < count; ++i) {
        Values& each = objects[i];
        each.group = group;
        each.object = first + static_cast<std::int32_t>(i) * step;
        each.isOpen = i % 2 == 0;
        each.channel = static_cast<std::int32_t>(i % 8);
        each.photons = static_cast<std::int32_t>(generator() % 1'000'000);
        each.angle = 15.0 + static_cast<double>(i % 130);
        each.intensity = std::round(1e7 * std::exp(-static_cast<double>(i % 1000) / 300.0)) / 1e3;
        each.name = "toluene, 25.0 \xC2\xB0"
                    "C, sample " +
                    std::to_string(i);
        for (int byte = 0; byte < 64; ++byte) {
            each.samples += static_cast<char>(generator() & 0xFF);
        }
    }
    return objects;
}

// Returns objects with the keys only.
std::vector<Values> KeysOf(const std::vector<Values>& objects) {
    std::vector<Values> keys(objects.size());
    for (std::size_t i = 0; i < keys.size(); ++i) {
        keys[i].group = objects[i].group;
        keys[i].object = objects[i].object;
    }
    return keys;
}

class Reading : public bss::WPersistentObject {
public:
    explicit Reading(const Values& values)
        : WPersistentObject(values.group, values.object, version), m_values(values),
          m_name(krtpal::WideFromUtf8(values.name)) {}

    Values Content() const {
        Values values = m_values;
        values.name = krtpal::Utf8FromWide(m_name);
        return values;
    }
    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        auto& database = static_cast<bss::WDatabase&>(*m_pSerializer);
        static const std::wstring labels[] = {L"isOpen",    L"channel", L"photons", L"angle",
                                              L"intensity", L"name",    L"samples"};
        const auto member = [&](const std::wstring& label, auto& value) {
            bRead ? database.Retrieve(label, value) : database.Insert(label, value);
        };
        member(labels[0], m_values.isOpen);
        member(labels[1], m_values.channel);
        member(labels[2], m_values.photons);
        member(labels[3], m_values.angle);
        member(labels[4], m_values.intensity);
        member(labels[5], m_name);
        member(labels[6], m_values.samples);
    }

private:
    Values m_values;
    std::wstring m_name;
};

// Owns readings and writes or reads them in one transaction.
class Run : public bss::WPersistentObject {
public:
    explicit Run(std::vector<Reading>& readings) : WPersistentObject(1, 1, version), m_readings(readings) {}
    void SerializeComponents(bool bRead) override {
        for (Reading& each : m_readings) {
            bRead ? each.Read(m_pSerializer, m_nVersion, true) : each.Write(m_pSerializer, m_nVersion, true);
        }
    }

private:
    std::vector<Reading>& m_readings;
};

class Krtbss : public Contestant {
public:
    explicit Krtbss(const std::string& path) { m_database.ConnectFile(L"", L"", krtpal::WideFromUtf8(path)); }

    void Take(const std::vector<Values>& objects) override {
        m_readings = std::vector<Reading>(objects.begin(), objects.end());
    }
    std::vector<Values> Give() const override {
        std::vector<Values> objects;
        for (const Reading& each : m_readings) {
            objects.push_back(each.Content());
        }
        return objects;
    }
    void Write(bool together) override {
        if (together) {
            Run(m_readings).Write(&m_database, 0, true);
            return;
        }
        for (Reading& each : m_readings) {
            each.Write(&m_database, 0, true);
        }
    }
    void Read(bool together) override {
        if (together) {
            Run(m_readings).Read(&m_database, 0, true);
            return;
        }
        for (Reading& each : m_readings) {
            each.Read(&m_database, 0, true);
        }
    }

private:
    bss::WDatabase m_database;
    std::vector<Reading> m_readings;
};

class Series : public bss::WPersistentObject {
public:
    Series() : WPersistentObject(1, 1, version) {}
    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        static const std::wstring label = L"samples";
        bRead ? m_pSerializer->Retrieve(label, samples) : m_pSerializer->Insert(label, samples);
    }
    std::vector<double> samples;
};

class KrtbssSeries : public SeriesContestant {
public:
    explicit KrtbssSeries(const std::string& path) {
        m_database.ConnectFile(L"", L"", krtpal::WideFromUtf8(path));
    }
    void Write(const std::vector<double>& samples) override {
        m_series.samples = samples;
        m_series.Write(&m_database, 0, true);
    }
    std::vector<double> Read() override {
        m_series.Read(&m_database, 0, true);
        return std::move(m_series.samples);
    }

private:
    bss::WDatabase m_database;
    Series m_series;
};

// Creates a file with the tables of both classes, as the library creates them, without rows. Returns its
// path.
std::string MakeFile(const std::string& name) {
    const std::string path = PathOf(name);
    std::filesystem::remove(path);
    Krtbss database(path);
    database.Take(MakeObjects(1, 1));
    database.Write(true);
    KrtbssSeries(path).Write({1.0});
    Execute(path, "DELETE FROM Reading; DELETE FROM Run; DELETE FROM Series");
    return path;
}

using Body = std::function<void(benchmark::State& state)>;

// Registers a benchmark of one batch of `count` per repetition, which reports exceptions as errors.
void Register(const std::string& name, std::size_t count, int repetitions, Body body) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [body = std::move(body)](benchmark::State& state) {
                                     try {
                                         body(state);
                                     } catch (const bss::WNestedException& e) {
                                         state.SkipWithError(krtpal::NarrowText(e.AsString(false)).c_str());
                                     } catch (const std::exception& e) {
                                         state.SkipWithError(e.what());
                                     }
                                 })
        ->Iterations(static_cast<benchmark::IterationCount>(count))
        ->Repetitions(repetitions)
        ->Unit(count == 1 ? benchmark::kMillisecond : benchmark::kMicrosecond)
        ->UseRealTime();
}

void TimeWrite(benchmark::State& state, Contestant& contestant, const std::vector<Values>& objects,
               bool together) {
    contestant.Take(objects);
    while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(objects.size()))) {
        contestant.Write(together);
    }
}

void TimeRead(benchmark::State& state, Contestant& contestant, const std::vector<Values>& objects,
              bool together) {
    contestant.Take(KeysOf(objects));
    while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(objects.size()))) {
        contestant.Read(together);
    }
    if (contestant.Give() != objects) {
        state.SkipWithError("what was read is not what was written");
    }
}

struct Entry {
    std::string name;
    std::string path;
    std::shared_ptr<Contestant> contestant;
};

void RegisterWrites(const std::vector<Entry>& entries, const std::string& what, std::size_t count,
                    bool together, int repetitions) {
    const std::vector<Values> objects = MakeObjects(count, 1);
    for (const Entry& each : entries) {
        Register("database/write " + what + "/" + each.name, count, repetitions,
                 [=](benchmark::State& state) {
                     Execute(each.path, "DELETE FROM Reading; DELETE FROM Run");
                     TimeWrite(state, *each.contestant, objects, together);
                 });
    }
}

void RegisterReads(const std::vector<Entry>& entries, const std::string& what, std::size_t count,
                   bool together, int repetitions) {
    const std::vector<Values> objects = MakeObjects(count, 1);
    for (const Entry& each : entries) {
        Register("database/read " + what + "/" + each.name, count, repetitions, [=](benchmark::State& state) {
            if (Ask(each.path, "SELECT COUNT(*) FROM Reading") != static_cast<long long>(count)) {
                Execute(each.path, "DELETE FROM Reading; DELETE FROM Run");
                each.contestant->Take(objects);
                each.contestant->Write(true);
            }
            TimeRead(state, *each.contestant, objects, together);
        });
    }
}

// A table whose number of rows grows between the benchmarks.
class Table {
public:
    explicit Table(const std::string& path) : m_path(path), m_database(path) {}

    // Grows the table to this many rows and scatters the objects among them, unless they exist.
    void GrowTo(long long rows, const std::vector<Values>& objects) {
        if (m_rows < rows) {
            Fill(rows);
        }
        const Values& first = objects.front();
        if (Ask(m_path, "SELECT COUNT(*) FROM Reading WHERE groupID = " + std::to_string(first.group) +
                            " AND objectID = " + std::to_string(first.object)) != 0) {
            return;
        }
        Execute(m_path, "DELETE FROM Run");
        m_database.Take(objects);
        m_database.Write(true);
        std::string scatter = "BEGIN;";
        for (const Values& each : objects) {
            scatter += "UPDATE Reading SET rowid = objectID WHERE groupID = " + std::to_string(each.group) +
                       " AND objectID = " + std::to_string(each.object) + ";";
        }
        Execute(m_path, scatter + "COMMIT");
    }

private:
    // Inserts rows with random primary keys, like the library's, and every eighth object number, which is
    // also the rowid.
    void Fill(long long rows) {
        Execute(m_path, "DELETE FROM Reading WHERE groupID = 2");
        Execute(m_path,
                "PRAGMA cache_size = -500000; PRAGMA synchronous = OFF; PRAGMA journal_mode = OFF; "
                "WITH RECURSIVE numbers(n) AS (SELECT " +
                    std::to_string(m_rows + 1) + " UNION ALL SELECT n + 1 FROM numbers WHERE n < " +
                    std::to_string(rows) +
                    ") "
                    "INSERT INTO Reading (rowid, RecID, m_nVersion, groupID, objectID, checkSum, isOpen, "
                    "channel, "
                    "photons, angle, intensity, name, samples) SELECT 8 * n, "
                    "printf('{%08X-0000-4000-8000-%012X}', "
                    "random() & 0xFFFFFFFF, n), " +
                    std::to_string(kVersion) + ", 1, 8 * n, '" + CheckSumText() +
                    "', n % 2, n % 8, n, n / 7.0, n / 9.0, 'toluene, 25.0 C, sample ' || n, randomblob(80) "
                    "FROM numbers");
        m_rows = rows;
        // Writes the pages to the disk now, outside the measured time.
        Execute(m_path, "PRAGMA synchronous = FULL; CREATE TABLE Flush (number INTEGER); DROP TABLE Flush");
    }

    std::string m_path;
    Krtbss m_database;
    long long m_rows = 0;
};

void RegisterGrowth(const std::string& path) {
    constexpr int kObjects = 1000;
    constexpr int kRepetitions = 5;
    const auto table = std::make_shared<Table>(path);
    const std::vector<Entry> entries = {{"krtbss", path, std::make_shared<Krtbss>(path)},
                                        {"bare ODBC", path, MakeOdbc(path)},
                                        {"SQLite C", path, MakeSqlite(path)}};
    int offset = 0;
    for (const int rows : {1'000, 10'000, 100'000, 1'000'000}) {
        const std::vector<Values> written = MakeObjects(kObjects, 2);
        const std::vector<Values> read = MakeObjects(kObjects, 1, ++offset, 8 * (rows / kObjects));
        const std::string size = std::to_string(rows) + " rows";
        for (const Entry& each : entries) {
            Register("database/write 1000 small objects to " + size + "/" + each.name, kObjects, kRepetitions,
                     [=](benchmark::State& state) {
                         table->GrowTo(rows, read);
                         Execute(path, "DELETE FROM Reading WHERE groupID = 2; DELETE FROM Run");
                         TimeWrite(state, *each.contestant, written, true);
                     });
        }
        for (const Entry& each : entries) {
            Register("database/read small objects among " + size + "/" + each.name, kObjects, kRepetitions,
                     [=](benchmark::State& state) {
                         table->GrowTo(rows, read);
                         TimeRead(state, *each.contestant, read, false);
                     });
        }
    }
}

// Returns 10 MiB of samples like an instrument's: a decay with noise, in single precision.
std::vector<double> MakeSeries() {
    std::vector<double> samples(10 * 1024 * 1024 / sizeof(double));
    std::mt19937 generator(1);
    std::normal_distribution<float> noise(0.0F, 0.01F);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = std::exp(-static_cast<float>(i % 4096) / 500.0F) + noise(generator);
    }
    return samples;
}

void RegisterSeries() {
    struct SeriesEntry {
        std::string name;
        std::string path;
        std::shared_ptr<SeriesContestant> contestant;
    };
    std::vector<SeriesEntry> entries;
    const std::string ours = MakeFile("series");
    entries.push_back({"krtbss", ours, std::make_shared<KrtbssSeries>(ours)});
    const std::string framed = MakeFile("series-odbc");
    entries.push_back({"bare ODBC", framed, MakeOdbcSeries(framed, true)});
    const std::string plain = MakeFile("series-odbc-plain");
    entries.push_back({"bare ODBC, not through zlib", plain, MakeOdbcSeries(plain, false)});
    const auto samples = std::make_shared<std::vector<double>>(MakeSeries());
    constexpr int kRepetitions = 5;
    for (const SeriesEntry& each : entries) {
        Register("database/write a 10 MiB array/" + each.name, 1, kRepetitions, [=](benchmark::State& state) {
            Execute(each.path, "DELETE FROM Series");
            for (auto step : state) {
                static_cast<void>(step);
                each.contestant->Write(*samples);
            }
        });
    }
    for (const SeriesEntry& each : entries) {
        Register("database/read a 10 MiB array/" + each.name, 1, kRepetitions, [=](benchmark::State& state) {
            if (Ask(each.path, "SELECT COUNT(*) FROM Series") == 0) {
                each.contestant->Write(*samples);
            }
            std::vector<double> read;
            for (auto step : state) {
                static_cast<void>(step);
                read = each.contestant->Read();
            }
            if (read != *samples) {
                state.SkipWithError("what was read is not what was written");
            }
        });
    }
}

void RegisterAll() {
    const auto soci = [](bool overOdbc) {
        return [overOdbc](const std::string& path) { return MakeSoci(path, overOdbc); };
    };
    const auto ours = [](const std::string& path) { return std::make_unique<Krtbss>(path); };
    const auto add = [](std::vector<Entry>& entries, const std::string& name, const std::string& file,
                        const auto& make) {
        const std::string path = MakeFile(file);
        entries.push_back({name, path, make(path)});
    };
    std::vector<Entry> entries;
    add(entries, "krtbss", "krtbss", ours);
    add(entries, "bare ODBC", "odbc", MakeOdbc);
    add(entries, "SOCI over ODBC", "soci-odbc", soci(true));
    add(entries, "SOCI over SQLite", "soci-sqlite", soci(false));
    add(entries, "SQLite C", "sqlite", MakeSqlite);
    RegisterWrites(entries, "10000 small objects in one transaction", 10'000, true, 5);
    RegisterReads(entries, "10000 small objects in one transaction", 10'000, true, 5);
    // A commit may take many milliseconds on a disk.
    RegisterWrites(entries, "small objects one by one", 100, false, 3);
    RegisterReads(entries, "small objects one by one", 10'000, false, 5);
    RegisterSeries();
    RegisterGrowth(MakeFile("growth"));
}

void RemoveFiles() {
    for (const auto& each : std::filesystem::directory_iterator(KRTBSS_BENCH_FOLDER)) {
        if (each.path().filename().string().starts_with("database-")) {
            std::filesystem::remove(each.path());
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    try {
        RegisterAll();
    } catch (const std::exception& e) {
        std::fprintf(stderr, "bench_database: %s\n", e.what());
        RemoveFiles();
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::ClearRegisteredBenchmarks();
    RemoveFiles();
    return 0;
}
