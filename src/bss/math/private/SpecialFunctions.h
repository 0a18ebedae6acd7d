// The special functions of Boost's math library that this folder calls, behind one source: its headers are
// heavy.

#ifndef BSS_MATH_PRIVATE_SPECIALFUNCTIONS_H
#define BSS_MATH_PRIVATE_SPECIALFUNCTIONS_H

namespace bss::detail {

// The complementary error function. Throws std::overflow_error for a result beyond the range of double; NaN
// gives NaN.
double Erfc(double x);

// The logarithm of the absolute value of the gamma function. Throws std::overflow_error beyond the range of
// double, std::domain_error at 0 and the negative integers.
double LogGamma(double x);

// To the nearest integer, halves away from zero. Throws boost::math::rounding_error if x is not finite.
double Round(double x);

} // namespace bss::detail

#endif
