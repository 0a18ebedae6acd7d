// Numbers as text, the same on every system and in every locale.

#ifndef TOOLS_CORRELOGRAM_TEXTFORMAT_H
#define TOOLS_CORRELOGRAM_TEXTFORMAT_H

#include <optional>
#include <string>

namespace correlogram {

// A value with its standard error, both in the unit that their place tells. An error of NaN means that there
// is none.
struct Measured {
    double value;
    double error;
};

// The number that the whole text is, blanks around it apart; a leading plus sign is allowed. Nothing for any
// other text. "nan", "inf" and numbers too large for a double give a value that is not finite.
std::optional<double> ParseNumber(const std::string& text);

// As %.<digits>g: significant digits, no trailing zeros, an exponent of at least two digits. "nan" and "inf"
// as they are.
std::string FormatGeneral(double value, int digits);

// As %.<decimals>f.
std::string FormatFixed(double value, int decimals);

// "64.92 +/- 0.14": the error with two significant digits, the value with the same decimals. Values below
// 0.001 or from 100,000 up share one exponent: "(3.412 +/- 0.007)e-12". A dash for no value; the value with 5
// digits for no error.
std::string FormatMeasured(const std::optional<Measured>& measured);

// The same, with the sign that is to stand between value and error.
std::string FormatMeasured(const std::optional<Measured>& measured, const std::string& plusMinus);

// The same text with U+FFFD for each byte that is not part of a UTF-8 character: file names may be any bytes,
// JSON and SVG may not.
std::string ValidUtf8(const std::string& text);

} // namespace correlogram

#endif
