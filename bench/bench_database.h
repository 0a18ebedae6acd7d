// Declarations that the contestants of bench_database share. The peers are in separate sources, since the
// headers of ODBC declare types of the operating system that the library declares differently.

#ifndef BENCH_BENCH_DATABASE_H
#define BENCH_BENCH_DATABASE_H

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

/// An object: a reading of an instrument. All times are for rows of the table Reading, which the library
/// creates, with the columns RecID, m_nVersion, groupID, objectID and checkSum followed by these.
struct Values {
    std::int32_t group = 0;
    std::int32_t object = 0;
    bool isOpen = false;
    std::int32_t channel = 0;
    std::int32_t photons = 0;
    double angle = 0.0;
    double intensity = 0.0;
    std::string name;    ///< UTF-8.
    std::string samples; ///< 64 bytes.

    bool operator==(const Values&) const = default;
};

/// Stores objects in a database file.
class Contestant {
public:
    Contestant() = default;
    Contestant(const Contestant&) = delete;
    Contestant& operator=(const Contestant&) = delete;
    virtual ~Contestant() = default;

    /// Sets the objects to write, or those whose group and object number select the objects to read.
    virtual void Take(const std::vector<Values>& objects) = 0;
    /// Writes all objects in one transaction if `together`, otherwise each in its own. REQUIRES: the file has
    /// none of them. Throws std::exception on failure.
    virtual void Write(bool together) = 0;
    /// Reads all objects in one transaction if `together`, otherwise each in its own. Throws std::exception
    /// on failure.
    virtual void Read(bool together) = 0;
    /// Returns the objects.
    virtual std::vector<Values> Give() const = 0;
};

/// Returns bare ODBC.
std::unique_ptr<Contestant> MakeOdbc(const std::string& path);
/// Returns SOCI over ODBC, or with its own SQLite back-end. Over ODBC, replaces the table Reading.
std::unique_ptr<Contestant> MakeSoci(const std::string& path, bool overOdbc);
/// Returns SQLite's C interface.
std::unique_ptr<Contestant> MakeSqlite(const std::string& path);

/// Stores one row of the table Series with an array of doubles in the column samples.
class SeriesContestant {
public:
    SeriesContestant() = default;
    SeriesContestant(const SeriesContestant&) = delete;
    SeriesContestant& operator=(const SeriesContestant&) = delete;
    virtual ~SeriesContestant() = default;

    /// Writes the row. REQUIRES: the row does not exist. Throws std::exception on failure.
    virtual void Write(const std::vector<double>& samples) = 0;
    /// Returns the samples of the row. Throws std::exception on failure.
    virtual std::vector<double> Read() = 0;
};

/// Returns bare ODBC. If `isFramed` the column has the library's bytes, otherwise the array's bytes in
/// memory.
std::unique_ptr<SeriesContestant> MakeOdbcSeries(const std::string& path, bool isFramed);

/// Executes statements through SQLite's C interface, on a separate connection.
void Execute(const std::string& path, const std::string& sql);
/// Returns the first column of the first row of a query, on a separate connection.
long long Ask(const std::string& path, const std::string& sql);

/// Returns the ODBC connection string of the library for such a file.
inline std::string OdbcConnection(const std::string& path) {
    return "DRIVER={SQLite3};Database=" + path +
           ";Timeout=10000;SyncPragma=FULL;FKSupport=0;LongNames=0;NoWCHAR=1;";
}

/// The value of the column m_nVersion for version 5.3.2.
inline constexpr std::int32_t kVersion = (5 << 24) + (3 << 16) + (2 << 8);

/// Returns the header of a binary column: its whole size, the compressed size, and twice the size of the
/// data.
inline std::string FrameHeader(std::size_t compressed, std::size_t length) {
    const auto size = static_cast<std::uint32_t>(length);
    const auto packed = static_cast<std::uint32_t>(compressed);
    const std::uint32_t header[] = {16 + (packed == 0 ? size : packed), packed, size, size};
    return {reinterpret_cast<const char*>(header), sizeof(header)};
}

/// Returns a text as long as a checksum, 12 code units of three bytes each. The peers compute no checksum.
inline const std::string& CheckSumText() {
    static const std::string text = [] {
        std::string units;
        for (int i = 0; i < 12; ++i) {
            units += "\xE7\xBC\xAC";
        }
        return units;
    }();
    return text;
}

/// Returns a random primary key in the library's form.
inline std::string NewKey() {
    static std::mt19937_64 generator(1);
    std::string key = "{00000000-0000-4000-8000-000000000000}";
    std::uint64_t bits = generator();
    for (const std::size_t at : {1, 2, 3, 4, 5, 6, 7, 8, 10, 11, 12, 13, 26, 27, 28, 29}) {
        key[at] = "0123456789ABCDEF"[bits & 0xF];
        bits >>= 4;
    }
    return key;
}

#endif
