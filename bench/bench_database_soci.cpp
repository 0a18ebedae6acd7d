// SOCI with prepared statements and bound variables, as its documentation recommends. Over ODBC it supports
// no binary values: there the samples are stored as hexadecimal text, in a table whose text columns have
// declared lengths.

#include "bench_database.h"

#include <soci/soci.h>

#include <stdexcept>

namespace {

std::string HexFromBytes(const std::string& bytes) {
    std::string text;
    text.reserve(2 * bytes.size());
    for (const char each : bytes) {
        const auto byte = static_cast<unsigned char>(each);
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 0xF];
    }
    return text;
}

unsigned DigitValue(char c) {
    return static_cast<unsigned>(c <= '9' ? c - '0' : c - 'a' + 10);
}

std::string BytesFromHex(const std::string& text) {
    std::string bytes;
    bytes.reserve(text.size() / 2);
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        bytes += static_cast<char>(DigitValue(text[i]) << 4 | DigitValue(text[i + 1]));
    }
    return bytes;
}

class Soci : public Contestant {
public:
    Soci(const std::string& path, bool overOdbc)
        : m_overOdbc(overOdbc),
          m_session(overOdbc ? "odbc" : "sqlite3",
                    overOdbc ? OdbcConnection(path) : "db=" + path + " timeout=10 synchronous=FULL") {}

    void Take(const std::vector<Values>& objects) override { m_objects = objects; }
    std::vector<Values> Give() const override { return m_objects; }

    void Write(bool together) override {
        if (!together) {
            for (const Values& each : m_objects) {
                soci::transaction transaction(m_session);
                WriteOne(each);
                transaction.commit();
            }
            return;
        }
        soci::transaction transaction(m_session);
        for (const Values& each : m_objects) {
            WriteOne(each);
        }
        transaction.commit();
    }
    void Read(bool together) override {
        if (!together) {
            for (Values& each : m_objects) {
                ReadOne(each);
            }
            return;
        }
        soci::transaction transaction(m_session);
        for (Values& each : m_objects) {
            ReadOne(each);
        }
        transaction.commit();
    }

private:
    void WriteOne(const Values& values) {
        m_row = values;
        m_exists.execute();
        if (m_exists.fetch()) {
            throw std::runtime_error("the row is there");
        }
        m_key = NewKey();
        m_version = kVersion;
        m_checkSum = CheckSumText();
        m_isOpen = values.isOpen ? 1 : 0;
        const std::string samples = FrameHeader(0, values.samples.size()) + values.samples;
        if (m_overOdbc) {
            m_hex = HexFromBytes(samples);
        } else {
            m_blob.write(0, samples.data(), samples.size());
        }
        m_insert.execute(true);
    }
    void ReadOne(Values& values) {
        m_row.group = values.group;
        m_row.object = values.object;
        m_select.execute();
        if (!m_select.fetch()) {
            throw std::runtime_error("no such row");
        }
        m_select.fetch(); // finds no further row and ends the statement
        m_row.isOpen = m_isOpen != 0;
        if (m_overOdbc) {
            m_row.samples = BytesFromHex(m_hex);
        } else {
            m_row.samples.resize(m_blob.get_len());
            m_blob.read(0, m_row.samples.data(), m_row.samples.size());
        }
        m_row.samples.erase(0, FrameHeader(0, 0).size());
        values = m_row;
        if (m_key.empty() || m_checkSum.empty() || m_version != kVersion) {
            throw std::runtime_error("no whole row");
        }
    }

    soci::statement PrepareInsert() {
        auto prepared =
            (m_session.prepare
                 << "INSERT INTO Reading (RecID, m_nVersion, groupID, objectID, checkSum, isOpen, channel, "
                    "photons, angle, intensity, name, samples) VALUES (:recid, :version, :grp, :obj, :sum, "
                    ":isopen, :channel, :photons, :angle, :intensity, :name, :samples)",
             soci::use(m_key), soci::use(m_version), soci::use(m_row.group), soci::use(m_row.object),
             soci::use(m_checkSum), soci::use(m_isOpen), soci::use(m_row.channel), soci::use(m_row.photons),
             soci::use(m_row.angle), soci::use(m_row.intensity), soci::use(m_row.name));
        return m_overOdbc ? (prepared, soci::use(m_hex)) : (prepared, soci::use(m_blob));
    }
    soci::statement PrepareSelect() {
        auto prepared =
            (m_session.prepare
                 << "SELECT RecID, m_nVersion, groupID, objectID, checkSum, isOpen, channel, photons, angle, "
                    "intensity, name, samples FROM Reading WHERE groupID = :grp AND objectID = :obj",
             soci::use(m_row.group), soci::use(m_row.object), soci::into(m_key), soci::into(m_version),
             soci::into(m_row.group), soci::into(m_row.object), soci::into(m_checkSum), soci::into(m_isOpen),
             soci::into(m_row.channel), soci::into(m_row.photons), soci::into(m_row.angle),
             soci::into(m_row.intensity), soci::into(m_row.name));
        return m_overOdbc ? (prepared, soci::into(m_hex)) : (prepared, soci::into(m_blob));
    }

    std::vector<Values> m_objects;
    Values m_row;
    std::string m_key;
    std::int32_t m_version = 0;
    std::string m_checkSum;
    int m_isOpen = 0;
    std::string m_hex;
    bool m_overOdbc;
    soci::session m_session;
    soci::blob m_blob{m_session};
    soci::statement m_exists{
        (m_session.prepare << "SELECT m_nVersion FROM Reading WHERE groupID = :grp AND objectID = :obj",
         soci::into(m_version), soci::use(m_row.group), soci::use(m_row.object))};
    soci::statement m_insert{PrepareInsert()};
    soci::statement m_select{PrepareSelect()};
};

} // namespace

std::unique_ptr<Contestant> MakeSoci(const std::string& path, bool overOdbc) {
    if (overOdbc) {
        // SOCI allocates 100 MiB for a text of undeclared length, and a read then takes milliseconds.
        Execute(
            path,
            "DROP TABLE Reading; CREATE TABLE Reading (RecID VARCHAR(38) PRIMARY KEY, m_nVersion integer NOT "
            "NULL, groupID integer NOT NULL, objectID integer NOT NULL, checkSum VARCHAR(60) NOT NULL, "
            "isOpen integer, channel integer, photons integer, angle double, intensity double, name "
            "VARCHAR(100), samples VARCHAR(160)); "
            "CREATE UNIQUE INDEX Reading_groupID_objectID ON Reading (groupID, objectID)");
    }
    return std::make_unique<Soci>(path, overOdbc);
}
