#include "bss/math/WFFT.h"

#include "Signals.h"
#include "support/AllocationCounter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace {

/// The transform, one butterfly after the other, as one would write it down.
class PlainTransform : private bss::WFFT {
public:
    static void Run(Signal& a, bool inverse) {
        const std::size_t n = a.size();
        const int log2 = ilog2(static_cast<int>(n));
        std::vector<double> cosine(n);
        std::vector<double> sine(n);
        std::vector<std::size_t> reversal(n);
        double angle = 0.0;
        for (std::size_t k = 0; k < n; ++k, angle += 6.283185307179586 / static_cast<double>(n)) {
            cosine[k] = std::cos(angle);
            sine[k] = inverse ? -std::sin(angle) : std::sin(angle);
            reversal[k] = ReverseBits(static_cast<unsigned>(k), log2);
        }
        std::size_t h = n;
        for (int r = log2 - 1; r >= 0; --r) {
            h /= 2;
            for (std::size_t k = 0; k < n; k += 2 * h) {
                const double c = cosine[reversal[k >> r]];
                const double s = sine[reversal[k >> r]];
                for (std::size_t j = 0; j < h; ++j) {
                    Complex& p = a[k + j];
                    Complex& q = a[k + j + h];
                    const double u = q.real() * c + q.imag() * s;
                    const double v = q.imag() * c - q.real() * s;
                    q = {p.real() - u, p.imag() - v};
                    p = {p.real() + u, p.imag() + v};
                }
            }
        }
        for (std::size_t i = 0; i < n; ++i) {
            if (reversal[i] > i) {
                std::swap(a[i], a[reversal[i]]);
            }
        }
        for (Complex& value : a) {
            value *= 1.0 / std::sqrt(static_cast<double>(n));
        }
    }
    using WFFT::ReverseBits;
};

bool SameBits(const Signal& a, const Signal& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(Complex)) == 0;
}

TEST(Fft, EachElementGoesThroughTheStatedArithmetic) {
    // Vector units, several stages in a pass, parts that fit the cache: none of it changes a bit.
    for (int log2 = 0; log2 <= 15; ++log2) {
        const Signal signal = MakeSignal(std::size_t{1} << log2, 5);
        for (const bool inverse : {false, true}) {
            Signal expected = signal;
            PlainTransform::Run(expected, inverse);
            Signal actual = signal;
            bss::WFFT fft;
            inverse ? fft.InverseComplexFFT(actual) : fft.ComplexFFT(actual);
            EXPECT_TRUE(SameBits(actual, expected)) << "2^" << log2 << " inverse " << inverse;
        }
    }
}

TEST(Fft, TransformOfKnownNumbers) {
    // Computed from the definition with 40 digits.
    const Signal expected = {{18.0, 12.75},
                             {-0.565708661284187347, 2.24087288816935147},
                             {-3.47487373415291634, -6.5784271247461901},
                             {-1.99168351273655269, -1.90193199956344387},
                             {-1.0, -3.75},
                             {-2.82011063748274279, 2.73150080073301974},
                             {-5.47487373415291634, -2.5784271247461901},
                             {-5.39413578603037744, 4.71163083084166076},
                             {-2.0, 3.75},
                             {1.39413578603037744, -15.3977271376617317},
                             {1.47487373415291634, -0.921572875253809902},
                             {-1.17988936251725721, -3.25492224992893633},
                             {-3.0, 0.25},
                             {-2.00831648726344731, -4.57464655124063955},
                             {-0.525126265847083665, 3.0784271247461901},
                             {-3.43429133871581265, 1.44522341865071944}};
    Signal signal(16);
    for (int j = 0; j < 16; ++j) {
        signal[static_cast<std::size_t>(j)] = {(7 * j) % 16 - 3.0, (5 * j) % 11 - 2.0};
    }
    bss::WFFT().ComplexFFT(signal);
    for (std::size_t k = 0; k < signal.size(); ++k) {
        EXPECT_NEAR(signal[k].real(), expected[k].real(), 2e-14) << k;
        EXPECT_NEAR(signal[k].imag(), expected[k].imag(), 2e-14) << k;
    }
}

TEST(Fft, KeepsEnergyTurnsShiftsIntoPhasesAndIsLinear) {
    for (const std::size_t length : {2U, 64U, 1024U, 8192U}) {
        bss::WFFT fft;
        const Signal a = MakeSignal(length, 7);
        const Signal b = MakeSignal(length, 8);
        Signal transformedA = a;
        Signal transformedB = b;
        fft.ComplexFFT2(transformedA, transformedB);
        const double energy = Energy(a);
        const double size = static_cast<double>(length);
        EXPECT_NEAR(Energy(transformedA), energy, 1e-11 * energy) << length;

        Signal shifted(length);
        Signal sum(length);
        for (std::size_t i = 0; i < length; ++i) {
            shifted[(i + 1) % length] = a[i];
            sum[i] = a[i] * 2.0 + b[i] * Complex(0.0, -3.0);
        }
        fft.ComplexFFT2(shifted, sum);
        Signal expectedShift(length);
        Signal expectedSum(length);
        for (std::size_t k = 0; k < length; ++k) {
            expectedShift[k] =
                transformedA[k] * std::polar(1.0, -6.283185307179586 * static_cast<double>(k) / size);
            expectedSum[k] = transformedA[k] * 2.0 + transformedB[k] * Complex(0.0, -3.0);
        }
        EXPECT_LT(Distance(shifted, expectedShift), 1e-11) << length;
        EXPECT_LT(Distance(sum, expectedSum), 1e-11) << length;
    }
}

TEST(Fft, InverseGivesTheSignalBackAndTheNextTransformIsForwardAgain) {
    bss::WFFT fft;
    for (const std::size_t length : {1U, 2U, 4U, 512U, 4096U, 2U}) { // also with other tables in between
        const Signal signal = MakeSignal(length, 9);
        Signal there = signal;
        fft.ComplexFFT(there);
        Signal back = there;
        fft.InverseComplexFFT(back);
        EXPECT_LT(Distance(back, signal), 1e-12) << length;
        Signal again = signal;
        fft.ComplexFFT(again);
        EXPECT_TRUE(SameBits(again, there)) << length;
    }
}

TEST(Fft, TwoAtOnceAreWhatEachIsAlone) {
    for (const std::size_t length : {1U, 2U, 4U, 8U, 256U, 2048U, 4096U}) {
        Signal a = MakeSignal(length, 1);
        Signal b = MakeSignal(length, 2);
        Signal aloneA = a;
        Signal aloneB = b;
        bss::WFFT fft;
        fft.ComplexFFT(aloneA);
        fft.ComplexFFT(aloneB);
        fft.ComplexFFT2(a, b);
        EXPECT_TRUE(SameBits(a, aloneA) && SameBits(b, aloneB)) << length;
    }
    Signal a = MakeSignal(8, 1);
    Signal shorter = MakeSignal(4, 2);
    const Signal before = shorter;
    bss::WFFT().ComplexFFT2(a, shorter);
    EXPECT_TRUE(SameBits(shorter, before));
}

TEST(Fft, AnyLengthStaysInsideTheVector) {
    bss::WFFT fft;
    for (std::size_t length = 0; length < 70; ++length) {
        Signal signal = MakeSignal(length, 3);
        fft.ComplexFFT(signal);
        fft.InverseComplexFFT(signal);
        EXPECT_EQ(signal.size(), length);
    }
    Signal impulse(256);
    impulse[0] = 1.0;
    fft.ComplexFFT(impulse);
    EXPECT_EQ(impulse, Signal(256, Complex(1.0 / 16.0, 0.0)));
}

TEST(Fft, CopiesGoOnByThemselves) {
    const Signal signal = MakeSignal(64, 4);
    Signal expected = signal;
    bss::WFFT().ComplexFFT(expected);
    bss::WFFT copy;
    {
        bss::WFFT source;
        Signal scratch = signal;
        source.InverseComplexFFT(scratch);
        copy = source;
    }
    Signal actual = signal;
    copy.ComplexFFT(actual);
    EXPECT_TRUE(SameBits(actual, expected));
}

TEST(Fft, TakesNoMemoryOnceTheTablesStand) {
    SKIP_WITHOUT_ALLOCATION_COUNTER();
    bss::WFFT fft;
    Signal a = MakeSignal(4096, 1);
    Signal b = MakeSignal(4096, 2);
    fft.ComplexFFT(a);
    const long before = CountAllocations();
    fft.ComplexFFT(a);
    fft.InverseComplexFFT(a);
    fft.ComplexFFT2(a, b);
    EXPECT_EQ(CountAllocations(), before);
    b.resize(8192);
    fft.ComplexFFT(b);
    EXPECT_NE(CountAllocations(), before) << "the counter does not count";
}

TEST(Fft, BitsAreCountedAndReversed) {
    const int positions[][2] = {{0, -1}, {1, 0}, {2, 1}, {1023, 9}, {1024, 10}, {2147483647, 30}, {-1, 31}};
    for (const auto& [number, position] : positions) {
        EXPECT_EQ(bss::WFFT::ilog2(number), position) << number;
    }
    EXPECT_EQ(PlainTransform::ReverseBits(0b0011, 4), 0b1100U);
    EXPECT_EQ(PlainTransform::ReverseBits(0xF1, 4), 0b1000U);
    EXPECT_EQ(PlainTransform::ReverseBits(5, 0), 0U);
    EXPECT_EQ(PlainTransform::ReverseBits(5, -1), 0U);
    EXPECT_EQ(PlainTransform::ReverseBits(1, 32), 0x80000000U);
}

} // namespace
