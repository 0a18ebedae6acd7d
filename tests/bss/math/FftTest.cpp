#include "bss/math/WFFT.h"

#include "Signals.h"
#include "support/FailingAllocation.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <new>

#ifdef KRTBSS_HAS_FFTW
#include <fftw3.h>
#endif

namespace {

/// The transform, one butterfly after the other, as one would write it down.
Signal PlainTransform(Signal a, bool inverse) {
    const std::size_t n = a.size();
    const int log2 = bss::WFFT::ilog2(static_cast<int>(n));
    Signal twiddles(n);
    std::vector<std::size_t> reversal(n);
    double angle = 0.0;
    for (std::size_t k = 0; k < n; ++k, angle += 6.283185307179586 / static_cast<double>(n)) {
        twiddles[k] = {std::cos(angle), inverse ? -std::sin(angle) : std::sin(angle)};
        for (int bit = 0; bit < log2; ++bit) {
            reversal[k] = reversal[k] << 1 | (k >> bit & 1);
        }
    }
    for (int r = log2 - 1; r >= 0; --r) {
        const std::size_t h = std::size_t{1} << r;
        for (std::size_t j = 0; j < n; ++j) {
            if ((j & h) == 0) {
                const Complex w = twiddles[reversal[j >> (r + 1) << 1]];
                const Complex q = a[j + h];
                const Complex turned(q.real() * w.real() + q.imag() * w.imag(),
                                     q.imag() * w.real() - q.real() * w.imag());
                a[j + h] = a[j] - turned;
                a[j] += turned;
            }
        }
    }
    Signal result(n);
    for (std::size_t i = 0; i < n; ++i) {
        result[i] = a[reversal[i]] * (1.0 / std::sqrt(static_cast<double>(n)));
    }
    return result;
}

bool SameBits(const Signal& a, const Signal& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(Complex)) == 0;
}

// Vector units, several stages in a pass, parts that fit the cache, two signals at once, tables of the length
// before: none of it changes a bit.
TEST(Fft, EachElementGoesThroughTheStatedArithmetic) {
    bss::WFFT fft;
    for (const int log2 : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 3}) {
        const std::size_t length = std::size_t{1} << log2;
        const Signal one = MakeSignal(length, 5);
        const Signal other = MakeSignal(length, 6);
        Signal inverse = one;
        Signal forward = one;
        Signal first = one;
        Signal second = other;
        fft.InverseComplexFFT(inverse);
        fft.ComplexFFT(forward);
        fft.ComplexFFT2(first, second);
        EXPECT_TRUE(SameBits(inverse, PlainTransform(one, true))) << "2^" << log2;
        EXPECT_TRUE(SameBits(forward, PlainTransform(one, false))) << "2^" << log2;
        EXPECT_TRUE(SameBits(first, forward)) << "2^" << log2;
        EXPECT_TRUE(SameBits(second, PlainTransform(other, false))) << "2^" << log2;
    }
}

TEST(Fft, AgreesWithFftwUpTo2To20) {
#ifdef KRTBSS_HAS_FFTW
    bss::WFFT fft;
    for (int log2 = 0; log2 <= 20; ++log2) {
        const std::size_t length = std::size_t{1} << log2;
        Signal actual = MakeSignal(length, 11);
        Signal expected = actual;
        auto* const data = reinterpret_cast<fftw_complex*>(expected.data());
        const fftw_plan plan =
            fftw_plan_dft_1d(static_cast<int>(length), data, data, FFTW_FORWARD, FFTW_ESTIMATE);
        fftw_execute(plan);
        fftw_destroy_plan(plan);
        fft.ComplexFFT(actual);
        double sum = 0.0;
        for (std::size_t k = 0; k < length; ++k) {
            sum += std::norm(actual[k] - expected[k] / std::sqrt(static_cast<double>(length)));
        }
        // The tables' angles are sums of as many steps, each rounded by up to half a unit in the last place
        // of two pi.
        EXPECT_LT(std::sqrt(sum / static_cast<double>(length)), 1e-14 + 4.5e-16 * static_cast<double>(length))
            << "2^" << log2;
    }
#else
    GTEST_SKIP() << "FFTW is not built for this target";
#endif
}

TEST(Fft, AnyLengthStaysInsideTheVectors) {
    bss::WFFT fft;
    for (std::size_t length = 0; length < 70; ++length) {
        Signal signal = MakeSignal(length, 3);
        fft.ComplexFFT(signal);
        fft.InverseComplexFFT(signal);
        EXPECT_EQ(signal.size(), length);
    }
    Signal a = MakeSignal(8, 1);
    Signal shorter = MakeSignal(4, 2);
    fft.ComplexFFT2(a, shorter);
    EXPECT_TRUE(SameBits(shorter, MakeSignal(4, 2)));
}

TEST(Fft, TransformAfterAFailedOneBuildsItsTables) {
    SKIP_WITHOUT_FAILING_ALLOCATION();
    const Signal signal = MakeSignal(128, 3);
    Signal expected = signal;
    bss::WFFT().ComplexFFT(expected);
    for (long failing = 1; failing <= 5; ++failing) { // one of each table
        bss::WFFT fft;
        Signal actual = signal;
        FailAllocation(failing);
        EXPECT_THROW(fft.ComplexFFT(actual), std::bad_alloc) << failing;
        EXPECT_EQ(actual, signal);
        fft.ComplexFFT(actual);
        EXPECT_EQ(actual, expected) << failing;
    }
    FailAllocation(0);
}

TEST(Fft, CopyGoesOnByItself) {
    Signal expected = MakeSignal(64, 4);
    Signal actual = expected;
    auto source = std::make_unique<bss::WFFT>();
    source->ComplexFFT(expected);
    bss::WFFT copy(*source);
    source.reset();
    copy.ComplexFFT(actual);
    EXPECT_TRUE(SameBits(actual, expected));
}

TEST(Fft, Ilog2IsThePositionOfTheHighestBit) {
    const int positions[][2] = {{0, -1}, {1, 0}, {2, 1}, {1023, 9}, {1024, 10}, {2147483647, 30}, {-1, 31}};
    for (const auto& [number, position] : positions) {
        EXPECT_EQ(bss::WFFT::ilog2(number), position) << number;
    }
}

} // namespace
