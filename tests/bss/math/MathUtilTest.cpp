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
using Pair = std::pair<double, double>;
using Formula = double (*)(double);
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kUntouched = 123.0;

TEST(WMathUtil, ConstantsAreThoseOfTheNumbersTheyAreNamedFor) {
    constexpr double pi = std::numbers::pi;
    for (const auto& [constant, number] :
         {Pair(WMathUtil::PI, pi), Pair(WMathUtil::PISquared, pi * pi), Pair(WMathUtil::PIOver2, pi / 2),
          Pair(WMathUtil::TwoOverPI, 2 / pi), Pair(WMathUtil::SqrtPI, std::sqrt(pi)),
          Pair(WMathUtil::Sqrt2, std::sqrt(2.0)), Pair(WMathUtil::OneOverE, std::exp(-1.0)),
          Pair(WMathUtil::SqrtPIOver2, std::sqrt(pi / 2)), Pair(WMathUtil::TwoOverSqrtPI, 2 / std::sqrt(pi)),
          Pair(WMathUtil::Sqrt2OverPI, std::sqrt(2 / pi)), Pair(WMathUtil::LOG_E, 0.434294482)}) {
        EXPECT_DOUBLE_EQ(constant, number);
    }
    EXPECT_TRUE(WMathUtil::IsValidFPVal(-std::numeric_limits<double>::max()));
    EXPECT_FALSE(WMathUtil::IsValidFPVal(kNaN) || WMathUtil::IsValidFPVal(-kInfinity));
}

TEST(WMathUtil, BracketZeroWidensUntilTheSignChanges) {
    FormulaFunction line([](double x) { return x - 10.0; });
    FormulaFunction even([](double x) { return 10.0 - x * x; });
    struct Row {
        bss::WFunction* f;
        double a, b, newA, newB;
        bool isFound;
    };
    for (Row row : {Row{&line, 0.0, 1.0, 0.0, 17.576, true}, // the side of the smaller value moves
                    Row{&line, 19.0, 20.0, 2.424, 20.0, true},
                    Row{&even, -1.0, 1.0, -1.0, 4.2, true}, // of equal values the second
                    Row{&line, 9.0, 11.0, 9.0, 11.0, true}, Row{&line, 9.0, 9.0, 9.0, 9.0, false},
                    Row{nullptr, 9.0, 11.0, 9.0, 11.0, false}}) {
        EXPECT_EQ(WMathUtil::BracketZero(row.a, row.b, row.f), row.isFound);
        EXPECT_NEAR(row.a, row.newA, 1e-12);
        EXPECT_NEAR(row.b, row.newB, 1e-12);
    }
    FormulaFunction positive([](double) { return 1.0; });
    double a = 0.0;
    double b = 1.0;
    EXPECT_FALSE(WMathUtil::BracketZero(a, b, &positive));
    EXPECT_EQ(positive.evaluations, 52);
}

TEST(WMathUtil, BrentZeroFindsKnownRootsAndOtherwiseLeavesTheRoot) {
    struct Row {
        Formula f;
        double a, b, tolerance, root;
    };
    const Row rows[] = {
        {[](double x) { return std::cos(x) - x; }, 0.0, 1.0, 1e-10, 0.7390851332151607},
        {[](double x) { return x * x * x - 2.0 * x - 5.0; }, 3.0, 2.0, 1e-10, 2.0945514815423265},
        {[](double x) { return std::exp(x) - 1e6; }, -50.0, 50.0, 1e-10, std::log(1e6)},
        {[](double x) { return std::atan(x - 3.0); }, -1e3, 1e3, 1e-10, 3.0},
        {[](double x) { return x < 0.7 ? -1.0 : 1.0; }, 0.0, 1.0, 1e-10, 0.7},
        {[](double x) { return std::pow(x - 1.0, 9); }, 0.0, 3.0, 1e-10, 1.0},
        {[](double x) { return x; }, 0.0, 1.0, 1e-10, 0.0},
        {[](double x) { return x - 1.0; }, 0.0, 1.0, 1e-10, 1.0},
        // No change of sign, too many passes, and NaN, whose sign is none: everywhere, round the root, and on
        // the way.
        {[](double x) { return x * x + 1.0; }, -1.0, 1.0, 1e-10, kUntouched},
        {[](double x) { return x < 0.3 ? -1.0 : 1.0; }, 0.0, 1e300, -1.0, kUntouched},
        {[](double) { return kNaN; }, 1.0, 2.0, 1e-10, kUntouched},
        {[](double x) { return x > 0.4 && x < 0.6 ? kNaN : x - 0.5; }, 0.0, 1.0, 1e-10, kUntouched},
        {[](double x) { return x > 0.4 && x < 0.6 ? kNaN : std::copysign(1.0, x - 0.1); }, 0.0, 1.0, 1e-10,
         kUntouched},
    };
    for (const Row& row : rows) {
        FormulaFunction f(row.f);
        double root = kUntouched;
        EXPECT_FALSE(WMathUtil::BrentZero(nullptr, row.a, row.b, row.tolerance, root));
        EXPECT_EQ(WMathUtil::BrentZero(&f, row.a, row.b, row.tolerance, root), row.root != kUntouched);
        EXPECT_NEAR(root, row.root, 1e-10 + 1.2e-7 * std::fabs(row.root));
    }
}

TEST(WMathUtil, QuadraticRootsGivesTheRootOfThePositiveSquareRootFirst) {
    double r1 = 0.0;
    double r2 = 0.0;
    WMathUtil::QuadraticRoots(2.0, -2.0, -12.0, r1, r2);
    EXPECT_EQ(std::pair(r1, r2), std::pair(3.0, -2.0));
    WMathUtil::QuadraticRoots(-1.0, 0.0, 4.0, r1, r2);
    EXPECT_THROW(WMathUtil::QuadraticRoots(1.0, 0.0, 1.0, r1, r2), bss::WNENoSolution);
    EXPECT_THROW(WMathUtil::QuadraticRoots(0.0, 1.0, 1.0, r1, r2), bss::WNENoSolution);
    EXPECT_EQ(std::pair(r1, r2), std::pair(-2.0, 2.0));
}

TEST(WMathUtil, LinearInterpolationSmoothsThroughTheThreePointsRoundTheValue) {
    const Values x{0.0, 1.0, 2.0, 3.0, 4.0};
    const Values y{0.0, 3.0, 0.0, 6.0, 0.0};
    double out = kUntouched;
    EXPECT_FALSE(WMathUtil::LinearInterpolation({1.0, 2.0}, {1.0, 2.0}, 1.0, out));
    EXPECT_FALSE(WMathUtil::LinearInterpolation(x, {1.0, 2.0, 3.0}, 1.0, out));
    EXPECT_FALSE(WMathUtil::LinearInterpolation({2.0, 2.0, 2.0}, {1.0, 2.0, 3.0}, 1.0, out));
    EXPECT_EQ(out, kUntouched);
    // Lines through points 0-2 (1 flat), 1-3 (slope 1.5 through (2, 3)) and 2-4 (2 flat).
    const Pair rows[] = {{-5.0, 1.0}, {0.0, 1.0}, {0.5, 1.0}, {1.0, 1.0}, {1.5, 2.25},
                         {2.0, 3.0},  {2.5, 2.0}, {3.0, 2.0}, {4.0, 2.0}, {99.0, 2.0}};
    for (const auto& [at, expected] : rows) {
        EXPECT_TRUE(WMathUtil::LinearInterpolation(x, y, at, out));
        EXPECT_NEAR(out, expected, 1e-12) << at;
    }
}

TEST(WMathUtil, QuadraticInterpolationFindsTheFirstCrossing) {
    struct Row {
        const char* what;
        Values x, y;
        double level, out;
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
        {"more x than y", {0, 1, 2, 3, 4, 5, 6}, {0, 1, 4, 9}, 6.25, 2.5},
        {"fewer x than y, but enough", {0, 1, 2}, {0, 1, 4, 9}, 0.25, 0.5},
        {"nothing", {}, {}, 0.0, kUntouched},
        {"two points", {1, 2}, {1, 2}, 1.5, kUntouched},
        {"two x", {1, 2}, {0, 1, 2}, 1.5, kUntouched},
        {"two y", {0, 1, 2}, {0, 1}, 0.5, kUntouched},
        {"window behind the end of x", {0, 1, 2}, {5, 4, 3, 2, 1, 0}, 0.0, kUntouched},
        {"no width", {1, 1, 1}, {0, 1, 2}, 0.5, kUntouched},
        {"no slope", {0, 1, 2}, {4, 4, 4}, 4.0, kUntouched},
    };
    double out = kUntouched;
    for (const Row& row : rows) {
        out = kUntouched;
        EXPECT_EQ(WMathUtil::QuadraticInterpolation(row.x, row.y, row.level, out),
                  row.out == kUntouched ? 1 : 0);
        EXPECT_NEAR(out, row.out, 1e-9) << row.what;
    }
    // A crossing before the last point has no later neighbour, although memory and x go on.
    Values y{0, 8, 9, 20, 20.5};
    y.pop_back();
    EXPECT_EQ(WMathUtil::QuadraticInterpolation({0, 1, 2, 3, 4}, y, 10.0, out), 0);
    EXPECT_NEAR(out, 2.148331477355, 1e-9);
}

TEST(WMathUtil, FindNearestPointTakesTheFirstOfEqualsWithinItsReach) {
    EXPECT_EQ(WMathUtil::FindNearestPointUnsorted(1.5, {1.0, 2.0}), 0);
    EXPECT_EQ(WMathUtil::FindNearestPointUnsorted(1.6, {1.0, 5.0, 2.0, 2.0}), 2);
    EXPECT_EQ(WMathUtil::FindNearestPointUnsorted(1.0, {}), 0);
    EXPECT_EQ(WMathUtil::FindNearestPointUnsorted(0.0, {3e100, 2e100}), 0);
    EXPECT_EQ(WMathUtil::FindNearestPointUnsorted(0.0, {kNaN, 7.0}), 1);
}

// Lengths, orders, ties and infinities drawn at random; every pair has to be there again. NaN goes last,
// where the sort of pairs has a place for it.
TEST(WMathUtil, BothSortsOrderPairsAndLoseNone) {
    std::mt19937 random(20240917);
    const auto isLess = [](double a, double b) { return a < b || (std::isnan(b) && !std::isnan(a)); };
    for (int round = 0; round < 400; ++round) {
        Values a(random() % 120);
        Values b;
        const auto distinct = 1 + random() % 200;
        for (double& key : a) {
            key = static_cast<double>(random() % distinct) - 20.0;
            key = key == 3.0 ? kInfinity : key == 4.0 ? -kInfinity : round % 2 == 1 && key < 0.0 ? kNaN : key;
            b.push_back(static_cast<double>(b.size()));
        }
        Values keys = a;
        Values partners = b;
        if (round % 2 == 0) {
            WMathUtil::HeapSort2(keys, partners);
        } else {
            EXPECT_TRUE(WMathUtil::SortTwoVectors(keys, partners));
        }
        EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end(), isLess));
        for (std::size_t i = 0; i < a.size(); ++i) {
            const double before = a[static_cast<std::size_t>(partners[i])];
            EXPECT_TRUE(before == keys[i] || (std::isnan(before) && std::isnan(keys[i])));
        }
        std::sort(partners.begin(), partners.end());
        EXPECT_EQ(partners, b);
    }
}

TEST(WMathUtil, SortsOfUnequalLengthsChangeNothing) {
    Values a{3.0, 1.0, 2.0};
    Values b{1.0, 2.0};
    EXPECT_FALSE(WMathUtil::SortTwoVectors(a, b));
    WMathUtil::HeapSort2(a, b);
    EXPECT_EQ(a, (Values{3.0, 1.0, 2.0}));
    EXPECT_EQ(b, (Values{1.0, 2.0}));
    b = {1.0, 2.0, 3.0, 4.0};
    WMathUtil::HeapSort2(a, b);
    EXPECT_EQ(b, (Values{2.0, 3.0, 1.0, 4.0}));
}

TEST(WMathUtil, FactorialsAgreeWithTheGammaFunction) {
    EXPECT_EQ(WMathUtil::Factorial(-1), 1.0);
    // The product of doubles, one unit below the nearest one to 28!.
    EXPECT_EQ(WMathUtil::Factorial(28), std::nextafter(304888344611713860501504000000.0, 0.0));
    for (long n = 0; n <= 170; ++n) {
        EXPECT_NEAR(WMathUtil::Factorial(n) / std::tgamma(static_cast<double>(n) + 1.0), 1.0, 1e-12) << n;
    }
    EXPECT_EQ(WMathUtil::Factorial(171), kInfinity);
    EXPECT_EQ(WMathUtil::Factorial(std::numeric_limits<long>::max()), kInfinity);
}

TEST(WMathUtil, IncompleteGammaFunctionsAddUpToOneOrThrow) {
    for (const double a : {0.1, 0.5, 1.0, 2.5, 7.25, 20.0}) {
        for (const double x : {a * 0.8 + 1.3, a + 1.7, a * 1.3 + 2.1}) {
            EXPECT_NEAR(WMathUtil::GammaSerial(a, x) + WMathUtil::GammaContinuedFraction(a, x), 1.0, 1e-13);
        }
    }
    for (const double x : {0.0, 0.01, 0.3, 1.0, 2.0, 5.0}) {
        EXPECT_NEAR(WMathUtil::GammaSerial(0.5, x * x), std::erf(x), 1e-14);
    }
    for (const auto& [a, x] : {Pair(1.0, -1e-300), Pair(0.0, 1.0), Pair(1.0, 1e4), Pair(1.0, kNaN)}) {
        EXPECT_THROW(WMathUtil::GammaSerial(a, x), bss::WNENoSolution) << a << ' ' << x;
    }
    for (const auto& [a, x] : {Pair(1.0, 0.0), Pair(1.0, -1.0), Pair(0.5, 1e-3)}) {
        EXPECT_THROW(WMathUtil::GammaContinuedFraction(a, x), bss::WNENoSolution) << a << ' ' << x;
    }
    EXPECT_THROW(WMathUtil::GammaSerial(1e307, 1.0), std::overflow_error);
}

// Abramowitz and Stegun, tables 5.1 and 5.3.
TEST(WMathUtil, SineIntegralAgreesWithPublishedValues) {
    for (const auto& [x, si] : {Pair(0.5, 0.4931074180), Pair(1.0, 0.9460830704), Pair(2.0, 1.6054129768),
                                Pair(5.0, 1.5499312449), Pair(8.0, 1.5741868217)}) {
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
    const Values special{kNaN, kInfinity, -kInfinity, -0.0, 1e308, -1e308, 5e-324, 1.0, 2.0, 2.0, 3.0, -1.0};
    const auto draw = [&] { return special[random() % special.size()]; };
    for (int round = 0; round < 20000; ++round) {
        Values x(random() % 7);
        Values y(random() % 3 == 0 ? random() % 7 : x.size());
        std::generate(x.begin(), x.end(), draw);
        std::generate(y.begin(), y.end(), draw);
        double out = kUntouched;
        EXPECT_TRUE(WMathUtil::QuadraticInterpolation(x, y, draw(), out) == 0 || out == kUntouched);
        out = kUntouched;
        EXPECT_TRUE(WMathUtil::LinearInterpolation(x, y, draw(), out) || out == kUntouched);
        EXPECT_LE(static_cast<std::size_t>(WMathUtil::FindNearestPointUnsorted(draw(), x)), x.size());
        WMathUtil::HeapSort2(x, y);
    }
}

} // namespace
