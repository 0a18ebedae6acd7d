// WMathUtil: numeric utilities: root finding on a WFunction, three-point interpolation in sampled curves,
// paired sorting, the sine integral, the incomplete gamma functions and factorials. All static; the class is
// never instantiated.
//
//     double a = 0.0;
//     double b = 1.0;
//     double root = 0.0;
//     if (bss::WMathUtil::BracketZero(a, b, &f) && bss::WMathUtil::BrentZero(&f, a, b, 1e-9, root)) { ... }
//
// Failures are results: false, or 1 from QuadraticInterpolation, with the out parameter untouched.
// QuadraticRoots and the gamma functions throw WNENoSolution. No input, of whatever length or content, makes
// an operation read outside a vector or run for ever.
//
// Threads: all operations are re-entrant; the root finders evaluate the function they are given.

#ifndef BSS_MATH_WMATHUTIL_H
#define BSS_MATH_WMATHUTIL_H

#include "bss/Export.h"

#include <vector>

namespace bss {

class WFunction;

class KRTBSS_API WMathUtil {
public:
    static const double PI;
    static const double PISquared;
    static const double PIOver2;
    static const double TwoOverPI;
    static const double SqrtPI;
    static const double Sqrt2;
    static const double OneOverE;
    static const double SqrtPIOver2;   ///< sqrt(pi / 2)
    static const double TwoOverSqrtPI; ///< 2 / sqrt(pi)
    static const double Sqrt2OverPI;   ///< sqrt(2 / pi)
    static const double LOG_E;         ///< log10(e) to nine digits, 0.434294482, on purpose

    /// False for a NaN or an infinity.
    static bool IsValidFPVal(double value);

    /// Widens [a, b] by the factor 1.6 on the side of the smaller |f|, up to 50 times, until f(a) f(b) < 0
    /// (Press et al., "Numerical Recipes", zbrac). a and b keep the last values tried. False if no change of
    /// sign was found, f is null or a equals b.
    static bool BracketZero(double& a, double& b, WFunction* f);

    /// A root of f between a and b to the tolerance tol in x, by Brent's method (Brent, "Algorithms for
    /// Minimization without Derivatives", 1973) in up to 100 steps. False, with root untouched, if f(a) and
    /// f(b) have the same sign, if the steps do not suffice, if a value of f is NaN or if f is null. Values
    /// whose product underflows count as of neither sign, and the search then starts towards 0.0.
    static bool BrentZero(WFunction* f, double a, double b, double tol, double& root);

    /// Both real roots of a x^2 + b x + c; r1 belongs to the positive square root. Throws WNENoSolution if a
    /// is exactly 0.0 or the discriminant is negative.
    static void QuadraticRoots(double a, double b, double c, double& r1, double& r2);

    /// y at x = at on the least-squares straight line through three neighbouring points of an ascending x: a
    /// smoothing line, not a chord, which also serves outside the range. False for fewer than 3 points, for
    /// vectors of unequal length or for three equal x.
    static bool LinearInterpolation(const std::vector<double>& x, const std::vector<double>& y, double at,
                                    double& out);

    /// The x at which the curve reaches y = level, through a parabola on three points at the first crossing,
    /// or a straight line where the parabola has no finite real answer, and above the maximum (first three
    /// points) or below the minimum (last three). 0 for success, 1 for failure. Of two faults, fewer than 3 x
    /// and unequal lengths, both together are refused at once; with only one the call goes on as long as the
    /// three points exist.
    static int QuadraticInterpolation(const std::vector<double>& x, const std::vector<double>& y,
                                      double level, double& out);

    /// The index of the entry nearest to v, the first of equal ones; 0 for an empty vector or if none is
    /// within 1e100.
    static int FindNearestPointUnsorted(double v, const std::vector<double>& data);

    /// Sorts a ascending by heapsort, in place, with every move repeated on b. Not stable. b has to be as
    /// long as a; a shorter one leaves both as they are.
    static void HeapSort2(std::vector<double>& a, std::vector<double>& b);

    /// Sorts the pairs (a[i], b[i]) by a, ascending, NaN last; pairs with equal a come out in no fixed order.
    /// False, with nothing changed, if the lengths differ.
    static bool SortTwoVectors(std::vector<double>& a, std::vector<double>& b);

    /// n!; 1.0 for n below 0; above 32 by way of the logarithm of the gamma function, and infinite above 170.
    static double Factorial(long n);

    /// The regularized incomplete gamma functions, lower P(a, x) by its series and upper Q(a, x) by its
    /// continued fraction (modified Lentz; Press et al., gser and gcf). The series converges fast below x = a
    /// + 1, the fraction above. Both throw WNENoSolution after 100 terms without convergence and for x < 0;
    /// the series also for a = 0, the fraction also for x = 0. The fraction at exactly x = a - 1 starts with
    /// a division by zero that is not mended: it gives NaN.
    static double GammaSerial(double a, double x);
    static double GammaContinuedFraction(double a, double x);

    /// The sine integral, and its derivative sin(x) / x, by up to 16 terms of their power series to a
    /// relative 1e-6. For large |x| (from about 9) 16 terms do not suffice; that is their limit, and no
    /// error is reported.
    static double Si(double x);
    static double DerSi(double x);

    WMathUtil(const WMathUtil&) = delete;
    WMathUtil& operator=(const WMathUtil&) = delete;

private:
    WMathUtil();
    ~WMathUtil();
};

} // namespace bss

#endif
