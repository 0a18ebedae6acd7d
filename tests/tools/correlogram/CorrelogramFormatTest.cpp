#include "correlogram/TextFormat.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace correlogram;

TEST(CorrelogramFormat, NumbersAreWholeCells) {
    EXPECT_EQ(ParseNumber("2.5e-07"), 2.5e-7);
    EXPECT_EQ(ParseNumber(" +1 \t"), 1.0);
    EXPECT_EQ(ParseNumber("-0.5"), -0.5);
    for (const char* text : {"", " ", "+", "+-1", "1,5", "1 2", "0x10", "abc", "1e", "--1"}) {
        EXPECT_EQ(ParseNumber(text), std::nullopt) << text;
    }
    EXPECT_TRUE(std::isnan(ParseNumber("nan").value()));
    EXPECT_FALSE(std::isfinite(ParseNumber("-inf").value()));
    EXPECT_FALSE(std::isfinite(ParseNumber("1e999").value()));
}

TEST(CorrelogramFormat, ErrorDecidesTheDigits) {
    const double none = std::numeric_limits<double>::quiet_NaN();
    const struct {
        std::optional<Measured> measured;
        const char* text;
    } rows[] = {
        {Measured{64.9243, 0.13847}, "64.92 +/- 0.14"},
        {Measured{1154.5, 5.44}, "1154.5 +/- 5.4"},
        {Measured{0.0583, 0.0998}, "0.06 +/- 0.10"},
        {Measured{3.2818e-12, 7.0e-15}, "(3.2818 +/- 0.0070)e-12"},
        {Measured{16970.0, 2068.0}, "(1.70 +/- 0.21)e+04"},
        {Measured{-0.00004, 0.00079}, "(-0.4 +/- 7.9)e-04"},
        {Measured{9.9996e4, 30.0}, "99996 +/- 30"},
        {Measured{2.5, 0.0}, "2.5"},
        {Measured{2.5, none}, "2.5"},
        {Measured{none, 1.0}, "-"},
        {std::nullopt, "-"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(FormatMeasured(row.measured), row.text);
    }
}

TEST(CorrelogramFormat, BytesThatAreNoTextAreReplaced) {
    EXPECT_EQ(ValidUtf8("a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"), "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80");
    const std::string mark = "\xEF\xBF\xBD";
    EXPECT_EQ(ValidUtf8("\xFF"), mark);
    EXPECT_EQ(ValidUtf8("\xC3"), mark);                       // cut off
    EXPECT_EQ(ValidUtf8("\xC0\xAF"), mark + mark);            // overlong
    EXPECT_EQ(ValidUtf8("\xED\xA0\x80"), mark + mark + mark); // surrogate
    EXPECT_EQ(ValidUtf8("\xF4\x90\x80\x80z").back(), 'z');    // beyond U+10FFFF
    EXPECT_EQ(ValidUtf8("\xE0\x80\x80"), mark + mark + mark); // overlong
}
