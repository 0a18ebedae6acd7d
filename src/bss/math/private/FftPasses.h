// The passes of a radix-2 transform over the data, with the results in bit-reversed order.
//
// One butterfly combines p and q, at distance h, with a twiddle factor (c, s):
//
//     u = q.re c + q.im s       v = q.im c - q.re s
//     q = p - (u, v)            p = p + (u, v)
//
// Each element passes through exactly these operations, stage by stage, so the results do not depend on the
// order of the elements. That order is chosen for speed: one pass executes two stages, so data are loaded and
// stored once for both; vector units process several elements at once; a block that fits the cache is
// completed before the next one.
//
// The factor of block m is the same in every stage: one table serves all stages.
//
// Threads: the functions have no state.

#ifndef BSS_MATH_PRIVATE_FFTPASSES_H
#define BSS_MATH_PRIVATE_FFTPASSES_H

#include <cstddef>

namespace bss::fft {

/// Data of one or two transforms of the same length, as pairs of real and imaginary part.
struct Data {
    double* first;  ///< The first transform.
    double* second; ///< The second transform, null if there is only one.
};

/// Executes all stages of a transform of 2^log2 elements in place; the results are in bit-reversed order.
/// REQUIRES: log2 is at least 1; `twiddles` has 2^(log2 - 1) pairs of cosine and sine.
using Passes = void (*)(Data data, int log2, const double* twiddles, bool inverse);

/// The variant for every processor. See Passes.
void RunPasses(Data data, int log2, const double* twiddles, bool inverse);
/// The variant for processors with AVX2, defined only if KRTBSS_FFT_AVX2 is. See Passes.
/// REQUIRES: the processor has AVX2.
void RunPassesAvx2(Data data, int log2, const double* twiddles, bool inverse);

} // namespace bss::fft

#endif
