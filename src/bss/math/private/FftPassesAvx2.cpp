// Compiled with AVX2 instructions, on targets whose compiler and binary interface allow it.

#include "bss/math/private/FftPasses.h"

#include "bss/math/private/FftPassesCode.h"

namespace bss::fft {

void RunPassesAvx2(Data data, int log2, const double* twiddles, bool inverse) {
    inverse ? RunAll<true>(data, log2, twiddles) : RunAll<false>(data, log2, twiddles);
}

} // namespace bss::fft
