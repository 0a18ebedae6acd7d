// Numbers to text and back, in the forms of OLE automation with a decimal point.

#ifndef KRTPAL_POSIX_TEXT_NUMBERTEXT_H
#define KRTPAL_POSIX_TEXT_NUMBERTEXT_H

#include <optional>
#include <string>
#include <string_view>

namespace krtpal::posix {

/// The %G form with `digits` significant digits. Exact halves of the last digit go away from zero; what is a
/// half is decided from the exact value of the binary number. Infinities read "INF" and "-INF", no-numbers
/// "NAN" and "-NAN(IND)".
std::wstring TextFromDouble(double value, int digits);

/// A number in text: blanks around it, a sign before or behind it, groups with commas, decimal point,
/// exponent; or &H and &O with hexadecimal and octal digits.
struct NumberText {
    bool negative = false;
    std::string integer;  ///< decimal digits before the point, without leading zeros
    std::string fraction; ///< digits behind it
    int exponent = 0;     ///< cut at some 100,000
    bool IsInteger() const { return fraction.empty() && exponent == 0; }
};

/// Nothing if the text is no number.
std::optional<NumberText> ParseNumber(std::wstring_view text);
/// The nearest value; infinite if it is too large.
double DoubleFromNumber(const NumberText& number);

} // namespace krtpal::posix

#endif
