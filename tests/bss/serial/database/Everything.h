// A persistent object with a member of every kind, and one that owns components.

#ifndef TESTS_BSS_SERIAL_DATABASE_EVERYTHING_H
#define TESTS_BSS_SERIAL_DATABASE_EVERYTHING_H

#include "Persistent.h"

#include "bss/system/WGuid.h"

#include <ctime>
#include <string>
#include <tuple>
#include <vector>

/// A member of every kind that a table can hold.
class Everything : public Persistent {
public:
    explicit Everything(long object = 1) : Persistent(7, object) {}

    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        int count = 0;
        const auto members = [&](auto&... member) {
            (Pass(bRead, L"m_" + std::to_wstring(++count), member), ...);
        };
        members(flag, small, number, wide, single, real, text, narrow, time, guid, texts, narrows, flags,
                reals, longs, numbers, smalls, singlesVector);
        auto& database = static_cast<bss::WDatabase&>(*m_pSerializer);
        bRead ? database.RetrieveF(L"m_series", series) : database.InsertF(L"m_series", series);
    }

    auto Members() const {
        const std::vector<int> moment = {time.tm_year, time.tm_mon, time.tm_mday,
                                         time.tm_hour, time.tm_min, time.tm_sec};
        return std::make_tuple(flag, small, number, wide, single, real, text, narrow, moment,
                               bss::WGuid::GetAsText(guid), texts, narrows, flags, reals, longs, numbers,
                               smalls, singlesVector, series);
    }
    bool IsSame(const Everything& other) const { return Members() == other.Members(); }

    void Fill() {
        flag = true;
        small = -32768;
        number = 2147483647;
        wide = -2147483647 - 1;
        single = -0.5F;
        real = 1.23456789e-300;
        text = L"wide \u00B5 \u20AC \U0001F600 'quoted' \"twice\" \\ \n end";
        narrow = std::string("narrow\0bytes\xFF", 13);
        time.tm_year = 104;
        time.tm_mon = 2;
        time.tm_mday = 2;
        time.tm_hour = 3;
        time.tm_min = 4;
        time.tm_sec = 5;
        guid = {0x01234567, 0x89AB, 0xCDEF, {1, 2, 3, 4, 5, 6, 7, 8}};
        texts = {L"first", L"", L"third \U0001F600"};
        narrows = {"", "b", std::string(2000, 'c')};
        flags = {true, false, true};
        reals.assign(500, 0.1);
        longs = {1, -2, 3};
        numbers = {};
        smalls = {-1, 2};
        singlesVector = {1.5F};
        series = {1.0 / 3.0, 1e300};
    }

    bool flag = false;
    short small = 0;
    int number = 0;
    long wide = 0;
    float single = 0;
    double real = 0;
    std::wstring text;
    std::string narrow = " ";
    struct tm time {};
    GUID guid{};
    std::vector<std::wstring> texts;
    std::vector<std::string> narrows;
    std::vector<bool> flags;
    std::vector<double> reals;
    std::vector<long> longs;
    std::vector<int> numbers;
    std::vector<short> smalls;
    std::vector<float> singlesVector;
    std::vector<double> series;
};

#endif
