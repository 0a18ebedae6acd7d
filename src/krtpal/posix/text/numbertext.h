// Conversion between numbers and text in the forms of OLE automation, with a decimal point.

#ifndef KRTPAL_POSIX_TEXT_NUMBERTEXT_H
#define KRTPAL_POSIX_TEXT_NUMBERTEXT_H

#include <optional>
#include <string>
#include <string_view>

namespace krtpal::posix {

/// Returns the %G form with `digits` significant digits. Halves of the last digit, by the exact binary value,
/// are rounded away from zero. Infinities are "INF" and "-INF", NaN is "NAN" or, negative, "-NAN(IND)".
std::wstring TextFromDouble(double value, int digits);

/// A parsed number. Grammar: blanks around it, a sign before or after it, groups with commas, decimal point,
/// exponent; or &H and &O with hexadecimal and octal digits.
struct NumberText {
    bool negative = false;
    std::string integer;  ///< decimal digits before the point, without leading zeros
    std::string fraction; ///< digits after the point, without trailing zeros
    int exponent = 0;     ///< limited to 100,000 in magnitude
    bool IsInteger() const { return fraction.empty() && exponent == 0; }
};

/// Returns nothing if the text is not a number.
std::optional<NumberText> ParseNumber(std::wstring_view text);
/// Returns the nearest value, infinity if the number is too large.
double DoubleFromNumber(const NumberText& number);

} // namespace krtpal::posix

#endif
