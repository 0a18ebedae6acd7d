// WMathUtil: numeric utilities: root finding on a WFunction, three-point interpolation in sampled curves,
// paired sorting, the sine integral, the incomplete gamma functions and factorials. All operations are
// static.
//
//     double a = 0.0;
//     double b = 1.0;
//     double root = 0.0;
//     if (bss::WMathUtil::BracketZero(a, b, &f) && bss::WMathUtil::BrentZero(&f, a, b, 1e-9, root)) { ... }
//
// Failures are results: false, or 1 from QuadraticInterpolation, with the out parameter unchanged.
// QuadraticRoots and the gamma functions throw WNENoSolution. No input, of any length or content, makes an
// operation read outside a vector or loop forever.
//
// Threads: all operations are re-entrant. The root finders evaluate the given function, which serves one
// thread at a time.

#ifndef BSS_MATH_WMATHUTIL_H
#define BSS_MATH_WMATHUTIL_H

#include "bss/Export.h"

#include <vector>

namespace bss {

class WFunction;

/// Numeric constants and operations. Not instantiable.
class KRTBSS_API WMathUtil {
public:
    static const double PI;            ///< pi.
    static const double PISquared;     ///< pi^2.
    static const double PIOver2;       ///< pi / 2.
    static const double TwoOverPI;     ///< 2 / pi.
    static const double SqrtPI;        ///< sqrt(pi).
    static const double Sqrt2;         ///< sqrt(2).
    static const double OneOverE;      ///< 1 / e.
    static const double SqrtPIOver2;   ///< sqrt(pi / 2).
    static const double TwoOverSqrtPI; ///< 2 / sqrt(pi).
    static const double Sqrt2OverPI;   ///< sqrt(2 / pi).
    static const double LOG_E;         ///< log10(e) to nine digits, 0.434294482; kept for compatibility.

    /// Returns true unless the value is NaN or infinite.
    static bool IsValidFPVal(double value);

    /// Returns true after widening [a, b] until f(a) f(b) < 0. Each of up to 50 steps extends the side of the
    /// smaller |f| by 1.6 times the width (Press et al., "Numerical Recipes", zbrac). Returns false if no
    /// change of sign was found, if f is null or if a equals b. `a` and `b` have the last values in either
    /// case. Throws what f throws.
    static bool BracketZero(double& a, double& b, WFunction* f);

    /// Returns true and stores a root of f between a and b, to the tolerance `tol` in x, by Brent's method
    /// (Brent, "Algorithms for Minimization without Derivatives", 1973; Press et al., zbrent) in up to 100
    /// steps. Returns false and leaves `root` unchanged if f(a) and f(b) have the same sign, if the steps do
    /// not suffice, if a value of f is NaN or if f is null. Values whose product underflows are taken as
    /// having no sign; the search then starts towards 0.0. Throws what f throws.
    static bool BrentZero(WFunction* f, double a, double b, double tol, double& root);

    /// Stores both real roots of a x^2 + b x + c, `r1` with the positive square root. Throws WNENoSolution if
    /// `a` is exactly 0.0 or the discriminant is negative; `r1` and `r2` are then unchanged.
    static void QuadraticRoots(double a, double b, double c, double& r1, double& r2);

    /// Returns true and stores y at x = `at` on the least-squares straight line through three neighbouring
    /// points: a smoothing line, not a chord, which also extrapolates. Returns false for fewer than 3 points,
    /// for vectors of unequal length and if the three x are equal. REQUIRES: x is ascending.
    static bool LinearInterpolation(const std::vector<double>& x, const std::vector<double>& y, double at,
                                    double& out);

    /// Returns 0 and stores the x at which the curve reaches y = `level`, or returns 1. A parabola through
    /// three points at the first crossing is solved. If it has no finite real solution, a least-squares line
    /// through the same points is solved. A level at or above the maximum uses a line through the first three
    /// points, one at or below the minimum a line through the last three. Returns 1 if the line is flat or
    /// has no distinct x, for fewer than 3 y, and if x lacks one of the points; unequal lengths alone are
    /// accepted.
    static int QuadraticInterpolation(const std::vector<double>& x, const std::vector<double>& y,
                                      double level, double& out);

    /// Returns the index of the entry nearest to v, the first of equally near ones. Returns 0 for an empty
    /// vector and if no entry is within 1e100.
    static int FindNearestPointUnsorted(double v, const std::vector<double>& data);

    /// Sorts `a` ascending in place by heapsort and moves the entries of `b` along. Not stable. A `b` shorter
    /// than `a` leaves both unchanged.
    static void HeapSort2(std::vector<double>& a, std::vector<double>& b);

    /// Returns true after sorting the pairs (a[i], b[i]) by a, ascending, NaN last; pairs of equal a are in
    /// no defined order. Returns false and changes nothing if the lengths differ. Throws std::bad_alloc if
    /// memory is short.
    static bool SortTwoVectors(std::vector<double>& a, std::vector<double>& b);

    /// Returns n!, and 1.0 for n below 0. Above 32 the result is computed from the logarithm of the gamma
    /// function, and above 170 it is infinite.
    static double Factorial(long n);

    /// Returns the regularized lower incomplete gamma function P(a, x) by its series (Press et al., gser),
    /// which converges fast for x below a + 1; 0.0 for x = 0. Throws WNENoSolution for x < 0, for a = 0, and
    /// if 100 terms do not converge; std::overflow_error if the logarithm of gamma(a) exceeds the range of
    /// double.
    static double GammaSerial(double a, double x);
    /// Returns the regularized upper incomplete gamma function Q(a, x) by its continued fraction (modified
    /// Lentz method; Press et al., gcf), which converges fast for x above a + 1. Returns NaN for x = a - 1,
    /// where the first term divides by zero. Throws WNENoSolution for x <= 0 and if 100 terms do not
    /// converge; std::domain_error if a is 0 or a negative integer; std::overflow_error as GammaSerial does.
    static double GammaContinuedFraction(double a, double x);

    /// Returns the sine integral, the integral of sin(t) / t from 0 to x, by up to 16 terms of its power
    /// series to a relative 1e-6 (Abramowitz and Stegun 5.2.14). From |x| of about 9 the 16 terms do not
    /// suffice; no error is reported.
    static double Si(double x);
    /// Returns sin(x) / x, the derivative of the sine integral, by up to 16 terms of its power series to a
    /// relative 1e-6; 1.0 for x = 0. The terms do not suffice for large |x|; no error is reported.
    static double DerSi(double x);

    /// Not copyable.
    WMathUtil(const WMathUtil&) = delete;
    /// Not assignable.
    WMathUtil& operator=(const WMathUtil&) = delete;

private:
    WMathUtil();
    ~WMathUtil();
};

} // namespace bss

#endif
