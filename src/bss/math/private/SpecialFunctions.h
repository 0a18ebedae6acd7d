// The special functions of Boost's math library that this folder calls. One source includes Boost's headers,
// which are slow to compile.
//
// Threads: no state.

#ifndef BSS_MATH_PRIVATE_SPECIALFUNCTIONS_H
#define BSS_MATH_PRIVATE_SPECIALFUNCTIONS_H

namespace bss::detail {

/// Returns the complementary error function; NaN for NaN. Throws std::overflow_error if the result exceeds
/// the range of double.
double Erfc(double x);

/// Returns the logarithm of the absolute value of the gamma function. Throws std::overflow_error if the
/// result exceeds the range of double, and std::domain_error at 0 and the negative integers.
double LogGamma(double x);

/// Returns x rounded to the nearest integer, halves away from zero. Throws boost::math::rounding_error if x
/// is not finite.
double Round(double x);

} // namespace bss::detail

#endif
