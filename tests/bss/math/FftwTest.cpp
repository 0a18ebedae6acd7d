// The transform beside the one of FFTW, which is there on Linux.

#include "bss/math/WFFT.h"

#include "Signals.h"

#include <gtest/gtest.h>

#include <cmath>

#ifdef KRTBSS_HAS_FFTW
#include <fftw3.h>
#endif

TEST(FftAgainstFftw, AllPowersOfTwoUpTo2To20) {
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
        for (Complex& value : expected) {
            value /= std::sqrt(static_cast<double>(length));
        }
        fft.ComplexFFT(actual);
        // The tables' angles are sums of as many steps, each rounded by up to half a unit in the last place
        // of two pi.
        EXPECT_LT(Distance(actual, expected), 1e-14 + 4.5e-16 * static_cast<double>(length)) << "2^" << log2;
    }
#else
    GTEST_SKIP() << "FFTW is not built for this target";
#endif
}
