#include "bss/math/WMathUtil.h"

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/math/FormulaFunction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <stdexcept>

namespace {

using bss::WMathUtil;
using Values = std::vector<double>;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(WMathUtil, ConstantsAreThoseOfTheNumbersTheyAreNamedFor) {
    constexpr double pi = std::numbers::pi;
    const std::pair<double, double> rows[] = {
        {WMathUtil::PI, pi},
        {WMathUtil::PISquared, pi * pi},
        {WMathUtil::PIOver2, pi / 2},
        {WMathUtil::TwoOverPI, 2 / pi},
        {WMathUtil::SqrtPI, std::sqrt(pi)},
        {WMathUtil::Sqrt2, std::sqrt(2.0)},
        {WMathUtil::OneOverE, std::exp(-1.0)},
        {WMathUtil::SqrtPIOver2, std::sqrt(pi / 2)},
        {WMathUtil::TwoOverSqrtPI, 2 / std::sqrt(pi)},
        {WMathUtil::Sqrt2OverPI, std::sqrt(2 / pi)},
        {WMathUtil::LOG_E, 0.434294482},
    };
    for (const auto& [constant, number] : rows) {
        EXPECT_DOUBLE_EQ(constant, number);
    }
    EXPECT_TRUE(WMathUtil::IsValidFPVal(-std::numeric_limits<double>::max()));
    EXPECT_FALSE(WMathUtil::IsValidFPVal(kNaN));
    EXPECT_FALSE(WMathUtil::IsValidFPVal(-kInfinity));
}

TEST(WMathUtil, BracketZeroWidensUntilTheSignChanges) {
    struct Row {
        const char* what;
        std::function<double(double)> f;
        double a;
        double b;
        double newA;
        double newB;
        bool found;
    };
    const auto line = [](double x) { return x - 10.0; };
    const Row rows[] = {
        {"the side of the smaller value moves: 1, 2.6, 6.76, 17.576", line, 0.0, 1.0, 0.0, 17.576, true},
        {"the other side", line, 19.0, 20.0, 2.424, 20.0, true},
        {"of two equal values the upper side", [](double x) { return 10.0 - x * x; }, -1.0, 1.0, -1.0, 4.2,
         true},
        {"a bracket stays", line, 9.0, 11.0, 9.0, 11.0, true},
        {"no width", line, 9.0, 9.0, 9.0, 9.0, false},
    };
    for (const Row& row : rows) {
        FormulaFunction f(row.f);
        double a = row.a;
        double b = row.b;
        EXPECT_EQ(WMathUtil::BracketZero(a, b, &f), row.found) << row.what;
        EXPECT_NEAR(a, row.newA, 1e-12) << row.what;
        EXPECT_NEAR(b, row.newB, 1e-12) << row.what;
        EXPECT_FALSE(WMathUtil::BracketZero(a, b, nullptr));
    }
    FormulaFunction positive([](double) { return 1.0; });
    double a = 0.0;
    double b = 1.0;
    EXPECT_FALSE(WMathUtil::BracketZero(a, b, &positive));
    EXPECT_EQ(positive.evaluations, 52);
}

TEST(WMathUtil, BrentZeroFindsKnownRoots) {
    struct Row {
        std::function<double(double)> f;
        double a;
        double b;
        double root;
    };
    const Row rows[] = {
        {[](double x) { return std::cos(x) - x; }, 0.0, 1.0, 0.7390851332151607},
        {[](double x) { return x * x * x - 2.0 * x - 5.0; }, 3.0, 2.0, 2.0945514815423265},
        {[](double x) { return std::exp(x) - 1e6; }, -50.0, 50.0, std::log(1e6)},
        {[](double x) { return std::atan(x - 3.0); }, -1e3, 1e3, 3.0},
        {[](double x) { return x < 0.7 ? -1.0 : 1.0; }, 0.0, 1.0, 0.7},
        {[](double x) { return std::pow(x - 1.0, 9); }, 0.0, 3.0, 1.0},
        {[](double x) { return x; }, 0.0, 1.0, 0.0},
        {[](double x) { return x - 1.0; }, 0.0, 1.0, 1.0},
    };
    for (const Row& row : rows) {
        FormulaFunction f(row.f);
        double root = kNaN;
        EXPECT_TRUE(WMathUtil::BrentZero(&f, row.a, row.b, 1e-10, root)) << row.root;
        EXPECT_NEAR(root, row.root, 1e-10 + 1.2e-7 * std::fabs(row.root));
    }
}

TEST(WMathUtil, BrentZeroWithoutAnAnswerLeavesTheRoot) {
    struct Row {
        const char* what;
        std::function<double(double)> f;
        double b;
        double tolerance;
    };
    // NaN has no sign: without a test the search would walk to 0.0 and call it a root.
    const Row rows[] = {
        {"no sign change", [](double x) { return x * x + 1.0; }, 1.0, 1e-9},
        {"NaN everywhere", [](double) { return kNaN; }, 2.0, 1e-9},
        {"NaN round the root", [](double x) { return x > 0.4 && x < 0.6 ? kNaN : x - 0.5; }, 1.0, 1e-9},
        {"NaN on the way", [](double x) { return x > 0.4 && x < 0.6 ? kNaN
                                                 : x < 0.1          ? -1.0
                                                                    : 1.0; }, 1.0,
         1e-9},
        {"too many passes", [](double x) { return x < 0.3 ? -1.0 : 1.0; }, 1e300, -1.0},
    };
    double root = 123.0;
    for (const Row& row : rows) {
        FormulaFunction f(row.f);
        EXPECT_FALSE(WMathUtil::BrentZero(&f, 0.0, row.b, row.tolerance, root)) << row.what;
    }
    EXPECT_FALSE(WMathUtil::BrentZero(nullptr, 0.0, 1.0, 1e-9, root));
    EXPECT_EQ(root, 123.0);
}

TEST(WMathUtil, QuadraticRootsGivesTheRootOfThePositiveSquareRootFirst) {
    double r1 = 0.0;
    double r2 = 0.0;
    WMathUtil::QuadraticRoots(2.0, -2.0, -12.0, r1, r2);
    EXPECT_EQ(r1, 3.0);
    EXPECT_EQ(r2, -2.0);
    WMathUtil::QuadraticRoots(-1.0, 0.0, 4.0, r1, r2);
    EXPECT_EQ(r1, -2.0);
    EXPECT_THROW(WMathUtil::QuadraticRoots(1.0, 0.0, 1.0, r1, r2), bss::WNENoSolution);
    EXPECT_THROW(WMathUtil::QuadraticRoots(0.0, 1.0, 1.0, r1, r2), bss::WNENoSolution);
    EXPECT_EQ(r2, 2.0);
}

TEST(WMathUtil, LinearInterpolationSmoothsThroughTheThreePointsRoundTheValue) {
    const Values x{0.0, 1.0, 2.0, 3.0, 4.0};
    const Values y{0.0, 3.0, 0.0, 6.0, 0.0};
    // Lines through points 0-2 (1 flat), 1-3 (slope 1.5 through (2, 3)) and 2-4 (2 flat).
    const std::pair<double, double> rows[] = {{-5.0, 1.0}, {0.0, 1.0}, {0.5, 1.0}, {1.0, 1.0}, {1.5, 2.25},
                                              {2.0, 3.0},  {2.5, 2.0}, {3.0, 2.0}, {4.0, 2.0}, {99.0, 2.0}};
    for (const auto& [at, expected] : rows) {
        double out = kNaN;
        EXPECT_TRUE(WMathUtil::LinearInterpolation(x, y, at, out));
        EXPECT_NEAR(out, expected, 1e-12) << at;
    }
    double out = 123.0;
    EXPECT_FALSE(WMathUtil::LinearInterpolation({1.0, 2.0}, {1.0, 2.0}, 1.0, out));
    EXPECT_FALSE(WMathUtil::LinearInterpolation({}, {}, 1.0, out));
    EXPECT_FALSE(WMathUtil::LinearInterpolation(x, {1.0, 2.0, 3.0}, 1.0, out));
    EXPECT_FALSE(WMathUtil::LinearInterpolation({2.0, 2.0, 2.0}, {1.0, 2.0, 3.0}, 1.0, out));
    EXPECT_EQ(out, 123.0);
}

TEST(WMathUtil, QuadraticInterpolationFindsTheFirstCrossing) {
    struct Row {
        const char* what;
        Values x;
        Values y;
        double level;
        double out;
    };
    const Row rows[] = {
        {"rising parabola x^2", {0, 1, 2, 3, 4}, {0, 1, 4, 9, 16}, 6.25, 2.5},
        {"falling parabola (x - 4)^2", {0, 1, 2, 3, 4}, {16, 9, 4, 1, 0}, 6.25, 1.5},
        {"crossing before point 1", {0, 1, 2, 3}, {0, 1, 4, 9}, 0.25, 0.5},
        {"an equal entry does not end the walk", {0, 1, 2, 3, 4}, {0, 4, 2, 1, 9}, 4.0, 3.515490033137},
        {"third point with the smaller step, behind", {0, 1, 2, 3}, {0, 8, 10, 11}, 9.0, 1.438447187191},
        {"of equal steps the later", {0, 1, 2, 3}, {0, 1, 5, 6}, 3.0, 1.409332709039},
        {"both roots as near to the middle: the first", {0, 1, 2}, {0, 1, 0}, 0.75, 1.5},
        {"a straight line has no parabola", {0, 1, 2, 3}, {0, 2, 4, 6}, 5.0, 2.5},
        {"level at the maximum: line through the first three", {0, 1, 2, 3}, {0, 2, 4, 5}, 5.0, 2.5},
        {"level above it", {0, 1, 2, 3}, {0, 2, 4, 5}, 10.0, 5.0},
        {"level at the minimum: line through the last three", {0, 1, 2, 3}, {9, 4, 1, 0}, 0.0, 2.0 + 5.0 / 6},
        {"level below it", {0, 1, 2, 3}, {9, 6, 3, 0}, -3.0, 4.0},
        {"more x than y", {0, 1, 2, 3, 4, 5, 6}, {0, 1, 4, 9}, 6.25, 2.5},
        {"fewer x than y, but enough", {0, 1, 2}, {0, 1, 4, 9}, 0.25, 0.5},
    };
    for (const Row& row : rows) {
        double out = kNaN;
        EXPECT_EQ(WMathUtil::QuadraticInterpolation(row.x, row.y, row.level, out), 0) << row.what;
        EXPECT_NEAR(out, row.out, 1e-9) << row.what;
    }
    // A crossing before the last point has no later neighbour, although memory and x go on.
    Values y{0, 8, 9, 20, 20.5};
    y.pop_back();
    double out = kNaN;
    EXPECT_EQ(WMathUtil::QuadraticInterpolation({0, 1, 2, 3, 4}, y, 10.0, out), 0);
    EXPECT_NEAR(out, 2.148331477355, 1e-9);
}

TEST(WMathUtil, QuadraticInterpolationRefusesWhatHasNoThreePointsOrNoSlope) {
    const Values three{0.0, 1.0, 2.0};
    struct Row {
        Values x;
        Values y;
        double level;
    };
    const Row rows[] = {
        {{}, {}, 0.0},
        {{1.0, 2.0}, {1.0, 2.0}, 1.5},
        {{1.0, 2.0}, three, 1.5},
        {three, {}, 1.5},
        {three, {0.0, 1.0}, 0.5},
        {three, {5.0, 4.0, 3.0, 2.0, 1.0, 0.0}, 0.0}, // the last three of six points lie behind the end of x
        {{1.0, 1.0, 1.0}, three, 0.5},
        {three, {4.0, 4.0, 4.0}, 4.0},
    };
    double out = 123.0;
    for (const Row& row : rows) {
        EXPECT_EQ(WMathUtil::QuadraticInterpolation(row.x, row.y, row.level, out), 1);
    }
    EXPECT_EQ(out, 123.0);
}

TEST(WMathUtil, FindNearestPointTakesTheFirstOfEqualsWithinItsReach) {
    EXPECT_EQ(WMathUtil::FindNearestPointUnsorted(1.5, {1.0, 2.0}), 0);
    EXPECT_EQ(WMathUtil::FindNearestPointUnsorted(1.6, {1.0, 5.0, 2.0, 2.0}), 2);
    EXPECT_EQ(WMathUtil::FindNearestPointUnsorted(1.0, {}), 0);
    EXPECT_EQ(WMathUtil::FindNearestPointUnsorted(0.0, {3e100, 2e100}), 0);
    EXPECT_EQ(WMathUtil::FindNearestPointUnsorted(0.0, {kNaN, 7.0}), 1);
}

// Lengths, orders, ties and infinities drawn at random; every pair has to be there again.
TEST(WMathUtil, BothSortsOrderPairsAndLoseNone) {
    std::mt19937 random(20240917);
    for (int round = 0; round < 400; ++round) {
        const std::size_t n = random() % 120;
        const auto distinct = 1 + random() % 200;
        Values a(n);
        Values b(n);
        for (std::size_t i = 0; i < n; ++i) {
            a[i] = static_cast<double>(random() % distinct) - 20.0;
            a[i] = a[i] == 3.0 ? kInfinity : a[i] == 4.0 ? -kInfinity : a[i];
            b[i] = static_cast<double>(i);
        }
        for (const bool heap : {true, false}) {
            Values keys = a;
            Values partners = b;
            if (heap) {
                WMathUtil::HeapSort2(keys, partners);
            } else {
                EXPECT_TRUE(WMathUtil::SortTwoVectors(keys, partners));
            }
            EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end()));
            for (std::size_t i = 0; i < n; ++i) {
                EXPECT_EQ(a[static_cast<std::size_t>(partners[i])], keys[i]);
            }
            std::sort(partners.begin(), partners.end());
            EXPECT_EQ(partners, b);
        }
    }
}

TEST(WMathUtil, SortsOfUnequalLengthsChangeNothingAndNotANumberGoesLast) {
    Values a{3.0, 1.0, 2.0};
    Values b{1.0, 2.0};
    EXPECT_FALSE(WMathUtil::SortTwoVectors(a, b));
    WMathUtil::HeapSort2(a, b);
    EXPECT_EQ(a, (Values{3.0, 1.0, 2.0}));
    EXPECT_EQ(b, (Values{1.0, 2.0}));
    b = {1.0, 2.0, 3.0, 4.0};
    WMathUtil::HeapSort2(a, b);
    EXPECT_EQ(b, (Values{2.0, 3.0, 1.0, 4.0}));

    a.resize(100);
    b.resize(100);
    for (std::size_t i = 0; i < a.size(); ++i) {
        a[i] = i % 3 == 0 ? kNaN : static_cast<double>((i * 37) % 100);
    }
    EXPECT_TRUE(WMathUtil::SortTwoVectors(a, b));
    EXPECT_TRUE(std::is_sorted(a.begin(), a.begin() + 66));
    EXPECT_TRUE(std::all_of(a.begin() + 66, a.end(), [](double v) { return std::isnan(v); }));
}

TEST(WMathUtil, FactorialsAgreeWithTheGammaFunction) {
    EXPECT_EQ(WMathUtil::Factorial(-1), 1.0);
    EXPECT_EQ(WMathUtil::Factorial(0), 1.0);
    EXPECT_EQ(WMathUtil::Factorial(22), 1124000727777607680000.0);
    // The product of doubles, one unit below the nearest one to 28!.
    EXPECT_EQ(WMathUtil::Factorial(28), std::nextafter(304888344611713860501504000000.0, 0.0));
    for (long n = 1; n <= 170; ++n) {
        EXPECT_NEAR(WMathUtil::Factorial(n) / std::tgamma(static_cast<double>(n) + 1.0), 1.0, 1e-12) << n;
    }
    EXPECT_EQ(WMathUtil::Factorial(171), kInfinity);
    EXPECT_EQ(WMathUtil::Factorial(std::numeric_limits<long>::max()), kInfinity);
}

TEST(WMathUtil, IncompleteGammaFunctionsAddUpToOne) {
    for (const double a : {0.1, 0.5, 1.0, 2.5, 7.25, 20.0}) {
        for (const double x : {a * 0.8 + 1.3, a + 1.7, a * 1.3 + 2.1}) {
            EXPECT_NEAR(WMathUtil::GammaSerial(a, x) + WMathUtil::GammaContinuedFraction(a, x), 1.0, 1e-13)
                << a << ' ' << x;
        }
    }
    for (const double x : {0.01, 0.3, 1.0, 2.0, 5.0}) {
        EXPECT_NEAR(WMathUtil::GammaSerial(0.5, x * x), std::erf(x), 1e-14);
    }
    EXPECT_EQ(WMathUtil::GammaSerial(2.0, 0.0), 0.0);
    EXPECT_TRUE(std::isnan(WMathUtil::GammaContinuedFraction(3.0, 2.0)));
}

TEST(WMathUtil, IncompleteGammaFunctionsThrowWithoutASolution) {
    const std::pair<double, double> serial[] = {{1.0, -1e-300}, {0.0, 1.0}, {1.0, 1e4}, {1.0, kNaN}};
    for (const auto& [a, x] : serial) {
        EXPECT_THROW(WMathUtil::GammaSerial(a, x), bss::WNENoSolution) << a << ' ' << x;
    }
    const std::pair<double, double> fraction[] = {{1.0, 0.0}, {1.0, -1.0}, {0.5, 1e-3}};
    for (const auto& [a, x] : fraction) {
        EXPECT_THROW(WMathUtil::GammaContinuedFraction(a, x), bss::WNENoSolution) << a << ' ' << x;
    }
    try {
        WMathUtil::GammaSerial(1e307, 1.0);
        ADD_FAILURE() << "no overflow";
    } catch (const std::overflow_error& error) {
        EXPECT_STREQ(error.what(), "Error in function boost::math::lgamma<double>(double): numeric overflow");
    }
}

// Abramowitz and Stegun, tables 5.1 and 5.3.
TEST(WMathUtil, SineIntegralAgreesWithPublishedValues) {
    const std::pair<double, double> rows[] = {{0.5, 0.4931074180},
                                              {1.0, 0.9460830704},
                                              {2.0, 1.6054129768},
                                              {5.0, 1.5499312449},
                                              {8.0, 1.5741868217}};
    for (const auto& [x, si] : rows) {
        EXPECT_NEAR(WMathUtil::Si(x), si, 2e-6 * si) << x;
        EXPECT_EQ(WMathUtil::Si(-x), -WMathUtil::Si(x));
        EXPECT_NEAR(WMathUtil::DerSi(x), std::sin(x) / x, 2e-6) << x;
        EXPECT_EQ(WMathUtil::DerSi(-x), WMathUtil::DerSi(x));
    }
    EXPECT_EQ(WMathUtil::Si(0.0), 0.0);
    EXPECT_EQ(WMathUtil::DerSi(0.0), 1.0);
    // Sixteen terms do not suffice there, and no error is reported.
    EXPECT_GT(std::fabs(WMathUtil::Si(30.0) - 1.5667), 1.0);
}

// Any lengths and contents: the sanitizer watches that nothing outside is read, and a result is a result.
TEST(WMathUtil, HostileInputNeverReadsOutside) {
    std::mt19937 random(31);
    const Values special{kNaN,   kInfinity, -kInfinity, 0.0, -0.0, 1e308, -1e308,
                         5e-324, 1.0,       2.0,        2.0, 3.0,  -1.0};
    const auto draw = [&] { return special[random() % special.size()]; };
    for (int round = 0; round < 20000; ++round) {
        Values x(random() % 7);
        Values y(random() % 3 == 0 ? random() % 7 : x.size());
        std::generate(x.begin(), x.end(), draw);
        std::generate(y.begin(), y.end(), draw);
        double out = 123.0;
        const int result = WMathUtil::QuadraticInterpolation(x, y, draw(), out);
        EXPECT_TRUE(result == 0 || (result == 1 && out == 123.0));
        out = 123.0;
        EXPECT_TRUE(WMathUtil::LinearInterpolation(x, y, draw(), out) || out == 123.0);
        EXPECT_LE(static_cast<std::size_t>(WMathUtil::FindNearestPointUnsorted(draw(), x)), x.size());
        WMathUtil::HeapSort2(x, y);
        WMathUtil::SortTwoVectors(x, y);
    }
}

} // namespace
