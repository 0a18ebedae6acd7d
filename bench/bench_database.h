// What the contestants of bench_database have in common. The peers are in sources of their own, since the
// headers of ODBC have types of the operating system in another way than the library has them.

#ifndef BENCH_BENCH_DATABASE_H
#define BENCH_BENCH_DATABASE_H

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

/// An object: a reading of an instrument. All times are for rows of the table Reading, which the library
/// makes, with these columns behind RecID, m_nVersion, groupID, objectID and checkSum.
struct Values {
    std::int32_t group = 0;
    std::int32_t object = 0;
    bool isOpen = false;
    std::int32_t channel = 0;
    std::int32_t photons = 0;
    double angle = 0.0;
    double intensity = 0.0;
    std::string name;    ///< UTF-8
    std::string samples; ///< 64 bytes

    bool operator==(const Values&) const = default;
};

/// Keeps objects in a database file, in a form of its own.
class Contestant {
public:
    Contestant() = default;
    Contestant(const Contestant&) = delete;
    Contestant& operator=(const Contestant&) = delete;
    virtual ~Contestant() = default;

    /// The objects to write, or those whose group and object number tell what to read.
    virtual void Take(const std::vector<Values>& objects) = 0;
    /// All of them in one transaction or each in one of its own; std::exception on failure. None of those
    /// that are written may be there.
    virtual void Write(bool together) = 0;
    virtual void Read(bool together) = 0;
    virtual std::vector<Values> Give() const = 0;
};

std::unique_ptr<Contestant> MakeOdbc(const std::string& path);
/// SOCI over ODBC or with its own SQLite back-end.
std::unique_ptr<Contestant> MakeSoci(const std::string& path, bool overOdbc);
std::unique_ptr<Contestant> MakeSqlite(const std::string& path);

/// One row of the table Series with an array of doubles in the column samples.
class SeriesContestant {
public:
    SeriesContestant() = default;
    SeriesContestant(const SeriesContestant&) = delete;
    SeriesContestant& operator=(const SeriesContestant&) = delete;
    virtual ~SeriesContestant() = default;

    virtual void Write(const std::vector<double>& samples) = 0;
    virtual std::vector<double> Read() = 0;
};

/// `isFramed`: with the library's bytes in the column, or the array as it stands in memory.
std::unique_ptr<SeriesContestant> MakeOdbcSeries(const std::string& path, bool isFramed);

/// Statements through SQLite's C interface, on a connection of their own.
void Execute(const std::string& path, const std::string& sql);
long long Ask(const std::string& path, const std::string& sql);

/// The connection of the library to such a file.
inline std::string OdbcConnection(const std::string& path) {
    return "DRIVER={SQLite3};Database=" + path +
           ";Timeout=10000;SyncPragma=FULL;FKSupport=0;LongNames=0;NoWCHAR=1;";
}

inline constexpr std::int32_t kVersion = (5 << 24) + (3 << 16) + (2 << 8);

/// The bytes of a binary column, in front of the data: its whole size, the compressed size, and twice the
/// size of the data.
inline std::string FrameHeader(std::size_t compressed, std::size_t length) {
    const auto size = static_cast<std::uint32_t>(length);
    const auto packed = static_cast<std::uint32_t>(compressed);
    const std::uint32_t header[] = {16 + (packed == 0 ? size : packed), packed, size, size};
    return {reinterpret_cast<const char*>(header), sizeof(header)};
}

/// A text as long as that of a checksum: 12 code units of three bytes each. Peers make no sum of their own.
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

/// A random primary key as the library makes one.
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
