#include "TimeText.h"
#include "support/Rows.h"
#include "support/Wine.h"

#include <cmath>

namespace {

TEST(OleDate, FieldsBecomeDatesToTheLastBitAndDatesBecomeFieldsRoundedToSeconds) {
#if defined(_WIN32) && !defined(_WIN64)
    // The 32-bit system adds day and time in the x87's wider registers: one unit in the last place.
    constexpr double tolerance = 2.3e-16;
#else
    constexpr double tolerance = 0.0;
#endif
    for (const auto& row : ReadRows("krtpal/ole_dates.tsv")) {
        if (row.size() > 3 && RunsUnderWine()) {
            continue;
        }
        const bool refused = row[2] == "refused";
        if (row[1] == "to date") {
            SYSTEMTIME time = ParseTime(row[0]);
            double date = -7.0;
            EXPECT_EQ(SystemTimeToVariantTime(&time, &date) == FALSE, refused) << row[0];
            const double expected = refused ? -7.0 : std::stod(row[2]);
            EXPECT_NEAR(date, expected, std::fabs(expected) * tolerance) << row[0];
        } else {
            SYSTEMTIME time{};
            EXPECT_EQ(VariantTimeToSystemTime(std::stod(row[0]), &time) == FALSE, refused) << row[0];
            EXPECT_TRUE(refused || TextOf(time) == row[2]) << row[0] << " is " << TextOf(time);
        }
    }
}

TEST(OleDate, SecondsAcrossDayZeroComeBack) {
    for (WORD second = 0; second < 60; ++second) {
        for (const WORD hour : {WORD{0}, WORD{11}, WORD{23}}) {
            for (const WORD day : {WORD{29}, WORD{30}}) {
                SYSTEMTIME time{1899, 12, 0, day, hour, 59, second, 0};
                SYSTEMTIME back{};
                double date = 0.0;
                ASSERT_TRUE(SystemTimeToVariantTime(&time, &date) && VariantTimeToSystemTime(date, &back));
                ASSERT_EQ(TextOf(back), TextOf(time));
            }
        }
    }
}

} // namespace
