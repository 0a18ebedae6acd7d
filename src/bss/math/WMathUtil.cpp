#include "bss/math/WMathUtil.h"

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/math/WFunction.h"
#include "bss/math/private/SpecialFunctions.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace bss {

constexpr double WMathUtil::PI = 3.141592653589793;
constexpr double WMathUtil::PISquared = 9.869604401089358;
constexpr double WMathUtil::PIOver2 = 1.5707963267948966;
constexpr double WMathUtil::TwoOverPI = 0.6366197723675814;
constexpr double WMathUtil::SqrtPI = 1.772453850905516;
constexpr double WMathUtil::Sqrt2 = 1.4142135623730951;
constexpr double WMathUtil::OneOverE = 0.36787944117144233;
constexpr double WMathUtil::SqrtPIOver2 = 1.2533141373155003;
constexpr double WMathUtil::TwoOverSqrtPI = 1.1283791670955126;
constexpr double WMathUtil::Sqrt2OverPI = 0.7978845608028654;
constexpr double WMathUtil::LOG_E = 0.434294482;

namespace {

constexpr double kEpsilon = 2.220446049250313e-16;
constexpr int kSeriesTerms = 16;
constexpr double kSeriesTolerance = 1e-6;
constexpr long kLastTabulatedFactorial = 32;

// 1! to 32!, correctly rounded; used by the series.
constexpr std::array<double, 32> kFactorials{
    1.0,
    2.0,
    6.0,
    24.0,
    120.0,
    720.0,
    5040.0,
    40320.0,
    362880.0,
    3628800.0,
    39916800.0,
    479001600.0,
    6227020800.0,
    87178291200.0,
    1307674368000.0,
    20922789888000.0,
    355687428096000.0,
    6402373705728000.0,
    121645100408832000.0,
    2432902008176640000.0,
    51090942171709440000.0,
    1124000727777607680000.0,
    25852016738884976640000.0,
    620448401733239439360000.0,
    15511210043330985984000000.0,
    403291461126605635584000000.0,
    10888869450418352160768000000.0,
    304888344611713860501504000000.0,
    8841761993739701954543616000000.0,
    265252859812191058636308480000000.0,
    8222838654177922817725562880000000.0,
    263130836933693530167218012160000000.0,
};

// Returns 0! to 32! by repeated multiplication. 28! to 30! differ from the table above by one unit in the
// last place (kept for agreement with stored results).
constexpr std::array<double, kLastTabulatedFactorial + 1> FactorialsByMultiplication() {
    std::array<double, kLastTabulatedFactorial + 1> factorials{1.0};
    for (std::size_t n = 1; n < factorials.size(); ++n) {
        factorials[n] = factorials[n - 1] * static_cast<double>(n);
    }
    return factorials;
}
constexpr auto kFactorialProducts = FactorialsByMultiplication();

// Returns the sum of (-1)^i first x^(2i) / divisor(i), until a term is below kSeriesTolerance of the sum or
// for kSeriesTerms terms.
template <class Divisor>
double AlternatingSeries(double first, double x, Divisor divisor) {
    double power = first;
    double sum = 0.0;
    for (int i = 0; i < kSeriesTerms; ++i) {
        const double term = (i % 2 == 0 ? power : -power) / divisor(i);
        sum += term;
        if (std::fabs(term / sum) < kSeriesTolerance) {
            break;
        }
        power *= x * x;
    }
    return sum;
}

// Returns x^a exp(-x) / gamma(a), the prefactor of both incomplete gamma functions.
double GammaPrefactor(double a, double x) {
    return std::exp(std::log(x) * a - x - detail::LogGamma(a));
}

struct Point {
    double x;
    double y;
};
using Window = std::array<Point, 3>;

Window WindowOf(const std::vector<double>& x, const std::vector<double>& y, std::size_t i, std::size_t j,
                std::size_t k) {
    return {{{x[i], y[i]}, {x[j], y[j]}, {x[k], y[k]}}};
}

struct LineSums {
    double x = 0.0;
    double y = 0.0;
    double xx = 0.0;
    double xy = 0.0;
};

LineSums SumsOf(const Window& window) {
    LineSums sums;
    for (const Point& point : window) {
        sums.x += point.x;
        sums.y += point.y;
        sums.xx += point.x * point.x;
        sums.xy += point.x * point.y;
    }
    return sums;
}

double Determinant(double a11, double a12, double a13, double a21, double a22, double a23, double a31,
                   double a32, double a33) {
    return a11 * (a22 * a33 - a23 * a32) - a12 * (a21 * a33 - a23 * a31) + a13 * (a21 * a32 - a22 * a31);
}

// Stores the x at which the parabola through the window reaches level, the solution nearer to the window's
// mean x. Solves the normal equations by Cramer's rule. Returns false if there is no finite real solution.
bool SolveParabola(const Window& window, double level, double& out) {
    const LineSums s = SumsOf(window);
    double x2y = 0.0;
    double x3 = 0.0;
    double x4 = 0.0;
    for (const Point& point : window) {
        const double square = point.x * point.x;
        x2y += square * point.y;
        x3 += square * point.x;
        x4 += square * square;
    }
    constexpr double kPoints = 3.0;
    const double determinant = Determinant(kPoints, s.x, s.xx, s.x, s.xx, x3, s.xx, x3, x4);
    if (determinant == 0.0) {
        return false;
    }
    const double c0 = Determinant(s.y, s.x, s.xx, s.xy, s.xx, x3, x2y, x3, x4) / determinant;
    const double c1 = Determinant(kPoints, s.y, s.xx, s.x, s.xy, x3, s.xx, x2y, x4) / determinant;
    const double c2 = Determinant(kPoints, s.x, s.y, s.x, s.xx, s.xy, s.xx, x3, x2y) / determinant;
    const double b = c1 / c2;
    const double c = (c0 - level) / c2;
    const double discriminant = b * b - 4.0 * c;
    if (discriminant < 0.0) {
        return false;
    }
    const double root = std::sqrt(discriminant);
    const double r1 = (root - b) * 0.5;
    const double r2 = (b * -1.0 - root) * 0.5;
    const double mean = s.x / kPoints;
    const double nearer = std::fabs(r2 - mean) < std::fabs(r1 - mean) ? r2 : r1;
    if (!std::isfinite(nearer)) {
        return false;
    }
    out = nearer;
    return true;
}

// Stores the x at which the least-squares line through the window reaches level. Returns false if there is
// none.
bool SolveLine(const Window& window, double level, double& out) {
    const LineSums s = SumsOf(window);
    constexpr double kPoints = 3.0;
    const double determinant = s.xx * kPoints - s.x * s.x;
    if (determinant == 0.0) {
        return false;
    }
    const double slope = (s.xy * kPoints - s.y * s.x) / determinant;
    if (slope == 0.0) {
        return false;
    }
    const double intercept = (s.xx * s.y - s.xy * s.x) / determinant;
    out = (1.0 / slope) * level + (intercept * -1.0) / slope;
    return true;
}

// Returns the indices of three points around the first y beyond level. REQUIRES: at least 3 y.
std::array<std::size_t, 3> CrossingOf(const std::vector<double>& y, double level) {
    const std::size_t n = y.size();
    const bool down = level < y[0];
    for (std::size_t mid = 1; mid < n; ++mid) {
        if (down ? !(y[mid] < level) : !(y[mid] > level)) {
            continue;
        }
        const std::size_t lo = mid - 1;
        if (mid == 1) {
            return {lo, mid, 2};
        }
        if (mid == n - 1) {
            return {lo, mid, n - 3};
        }
        const bool above = std::fabs(y[mid + 1] - y[mid]) <= std::fabs(y[lo - 1] - y[lo]);
        return {lo, mid, above ? mid + 1 : lo - 1};
    }
    return {0, 1, n - 3};
}

} // namespace

bool WMathUtil::IsValidFPVal(double value) {
    return std::isfinite(value);
}

bool WMathUtil::BracketZero(double& a, double& b, WFunction* f) {
    if (f == nullptr || a == b) {
        return false;
    }
    double f1 = f->Evaluate(a);
    double f2 = f->Evaluate(b);
    for (int pass = 0; pass < 50; ++pass) {
        if (f1 * f2 < 0.0) {
            return true;
        }
        if (!(std::fabs(f2) > std::fabs(f1))) {
            b += 1.6 * (b - a);
            f2 = f->Evaluate(b);
        } else {
            a += 1.6 * (a - b);
            f1 = f->Evaluate(a);
        }
    }
    return false;
}

bool WMathUtil::BrentZero(WFunction* f, double a, double b, double tol, double& root) {
    if (f == nullptr) {
        return false;
    }
    double fa = f->Evaluate(a);
    double fb = f->Evaluate(b);
    if (fa * fb > 0.0) {
        return false;
    }
    double c = 0.0;
    double fc = fb;
    double lastStep = 0.0;
    double olderStep = 0.0;
    for (int pass = 0; pass < 100; ++pass) {
        if (std::isnan(fa) || std::isnan(fb)) {
            return false;
        }
        if (fb * fc > 0.0) {
            c = a;
            fc = fa;
            lastStep = b - a;
            olderStep = lastStep;
        }
        if (std::fabs(fc) < std::fabs(fb)) {
            a = b;
            b = c;
            c = a;
            fa = fb;
            fb = fc;
            fc = fa;
        }
        const double tol1 = std::fabs(b) * 6e-08 + tol * 0.5;
        const double xm = (c - b) * 0.5;
        if (std::fabs(xm) <= tol1 || fb == 0.0) {
            root = b;
            return true;
        }
        bool interpolated = false;
        if (std::fabs(olderStep) >= tol1 && std::fabs(fa) > std::fabs(fb)) {
            const double s = fb / fa;
            double p = 0.0;
            double q = 0.0;
            if (a == c) {
                p = 2.0 * xm * s;
                q = 1.0 - s;
            } else {
                const double q1 = fa / fc;
                const double r = fb / fc;
                p = s * (2.0 * xm * q1 * (q1 - r) - (b - a) * (r - 1.0));
                q = (q1 - 1.0) * (r - 1.0) * (s - 1.0);
            }
            if (p > 0.0) {
                q = -q;
            }
            p = std::fabs(p);
            if (2.0 * p < std::min(3.0 * xm * q - std::fabs(tol1 * q), std::fabs(olderStep * q))) {
                olderStep = lastStep;
                lastStep = p / q;
                interpolated = true;
            }
        }
        if (!interpolated) {
            lastStep = xm;
            olderStep = xm;
        }
        a = b;
        fa = fb;
        b += std::fabs(lastStep) > tol1 ? lastStep : std::copysign(tol1, xm);
        fb = f->Evaluate(b);
    }
    return false;
}

void WMathUtil::QuadraticRoots(double a, double b, double c, double& r1, double& r2) {
    const double discriminant = b * b - a * 4.0 * c;
    if (a == 0.0 || discriminant < 0.0) {
        throw WNENoSolution();
    }
    const double s = std::sqrt(discriminant);
    const double k = 1.0 / (a + a);
    r1 = (s - b) * k;
    r2 = (-b - s) * k;
}

bool WMathUtil::LinearInterpolation(const std::vector<double>& x, const std::vector<double>& y, double at,
                                    double& out) {
    const std::size_t n = x.size();
    if (n < 3 || y.size() != n) {
        return false;
    }
    const auto found = static_cast<std::size_t>(std::lower_bound(x.begin(), x.end(), at) - x.begin());
    const std::size_t first = found == 0 ? 0 : std::min(found - 1, n - 3);
    const LineSums s = SumsOf(WindowOf(x, y, first, first + 1, first + 2));
    const double determinant = 3.0 * s.xx - s.x * s.x;
    if (determinant == 0.0) {
        return false;
    }
    const double slope = (3.0 * s.xy - s.y * s.x) / determinant;
    const double intercept = (s.xx * s.y - s.xy * s.x) / determinant;
    out = slope * at + intercept;
    return true;
}

int WMathUtil::QuadraticInterpolation(const std::vector<double>& x, const std::vector<double>& y,
                                      double level, double& out) {
    const std::size_t n = y.size();
    if ((x.size() < 3 && x.size() != n) || n < 3) {
        return 1;
    }
    const auto [ymin, ymax] = std::minmax_element(y.begin(), y.end());
    const bool above = !(level < *ymax);
    const bool below = !above && !(level > *ymin);
    std::array<std::size_t, 3> points{0, 1, 2};
    if (below) {
        points = {n - 3, n - 2, n - 1};
    } else if (!above) {
        points = CrossingOf(y, level);
    }
    if (*std::max_element(points.begin(), points.end()) >= x.size()) {
        return 1;
    }
    const Window window = WindowOf(x, y, points[0], points[1], points[2]);
    if (!above && !below && SolveParabola(window, level, out)) {
        return 0;
    }
    return SolveLine(window, level, out) ? 0 : 1;
}

int WMathUtil::FindNearestPointUnsorted(double v, const std::vector<double>& data) {
    double best = 1e100;
    std::size_t nearest = 0;
    for (std::size_t i = 0; i < data.size(); ++i) {
        const double distance = std::fabs(data[i] - v);
        if (distance < best) {
            best = distance;
            nearest = i;
        }
    }
    return static_cast<int>(nearest);
}

void WMathUtil::HeapSort2(std::vector<double>& a, std::vector<double>& b) {
    if (a.size() < 2 || b.size() < a.size()) {
        return;
    }
    const auto siftDown = [&a, &b](std::size_t root, std::size_t size) {
        const double key = a[root];
        const double partner = b[root];
        for (std::size_t child = 2 * root + 1; child < size; child = 2 * root + 1) {
            if (child + 1 < size && a[child] < a[child + 1]) {
                ++child;
            }
            if (!(key < a[child])) {
                break;
            }
            a[root] = a[child];
            b[root] = b[child];
            root = child;
        }
        a[root] = key;
        b[root] = partner;
    };
    for (std::size_t root = a.size() / 2; root-- > 0;) {
        siftDown(root, a.size());
    }
    for (std::size_t last = a.size() - 1; last > 0; --last) {
        std::swap(a[0], a[last]);
        std::swap(b[0], b[last]);
        siftDown(0, last);
    }
}

bool WMathUtil::SortTwoVectors(std::vector<double>& a, std::vector<double>& b) {
    if (a.size() != b.size()) {
        return false;
    }
    std::vector<std::pair<double, double>> pairs(a.size());
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        pairs[i] = {a[i], b[i]};
    }
    // NaN last: a plain comparison of NaN is not a strict weak order, and std::sort could leave its range.
    std::sort(pairs.begin(), pairs.end(), [](const auto& left, const auto& right) {
        return left.first < right.first || (!std::isnan(left.first) && std::isnan(right.first));
    });
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        a[i] = pairs[i].first;
        b[i] = pairs[i].second;
    }
    return true;
}

double WMathUtil::Factorial(long n) {
    if (n < 0) {
        return 1.0;
    }
    if (n <= kLastTabulatedFactorial) {
        return kFactorialProducts[static_cast<std::size_t>(n)];
    }
    return std::exp(detail::LogGamma(static_cast<double>(n) + 1.0));
}

double WMathUtil::GammaSerial(double a, double x) {
    if (x < 0.0 || a == 0.0) {
        throw WNENoSolution();
    }
    if (x == 0.0) {
        return 0.0;
    }
    double ap = a;
    double term = 1.0 / a;
    double sum = term;
    for (int pass = 0; pass < 100; ++pass) {
        ap += 1.0;
        term *= x / ap;
        sum += term;
        if (std::fabs(term) < std::fabs(sum) * kEpsilon) {
            return sum * GammaPrefactor(a, x);
        }
    }
    throw WNENoSolution();
}

double WMathUtil::GammaContinuedFraction(double a, double x) {
    if (x <= 0.0) {
        throw WNENoSolution();
    }
    constexpr double kTiny = 1.0020841800044864e-292;
    double b = x + 1.0 - a;
    double c = 9.9792015476736e291;
    double d = 1.0 / b;
    double h = d;
    for (int i = 1; i <= 100; ++i) {
        const double an = (i - a) * -i;
        b += 2.0;
        d = an * d + b;
        if (std::fabs(d) < kTiny) {
            d = kTiny;
        }
        c = b + an / c;
        if (std::fabs(c) < kTiny) {
            c = kTiny;
        }
        d = 1.0 / d;
        const double del = d * c;
        h *= del;
        if (std::fabs(del - 1.0) <= kEpsilon) {
            return h * GammaPrefactor(a, x);
        }
    }
    throw WNENoSolution();
}

double WMathUtil::Si(double x) {
    if (x == 0.0) {
        return 0.0;
    }
    const double magnitude = std::fabs(x);
    const double sum = AlternatingSeries(magnitude, magnitude, [](int i) {
        const int k = 2 * i + 1;
        return kFactorials[static_cast<std::size_t>(k) - 1] * k;
    });
    return x < 0.0 ? -sum : sum;
}

double WMathUtil::DerSi(double x) {
    if (x == 0.0) {
        return 1.0;
    }
    const double magnitude = std::fabs(x);
    return AlternatingSeries(1.0, magnitude,
                             [](int i) { return kFactorials[2 * static_cast<std::size_t>(i)]; });
}

} // namespace bss
