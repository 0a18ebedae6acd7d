// The passes of a radix-2 transform over the data.
//
// One butterfly takes p and q, a distance h apart, and a twiddle factor (c, s):
//
//     u = q.re c + q.im s       v = q.im c - q.re s
//     q = p - (u, v)            p = p + (u, v)
//
// Each element goes through exactly these operations, stage by stage. What is free is the order of elements:
// two stages are done in one pass, so that data are loaded and stored once for both, several elements at once
// in the processor's vector units; and a block that fits the cache is finished before the next is begun.
//
// The factor of block m is the same in every stage, so one table serves all.

#ifndef BSS_MATH_PRIVATE_FFTPASSES_H
#define BSS_MATH_PRIVATE_FFTPASSES_H

#include <cstddef>

namespace bss::fft {

/// Data of one or two transforms of the same length, as pairs of real and imaginary part.
struct Data {
    double* first;
    double* second; ///< null if there is one only
};

/// All stages of a transform of 2^log2 elements; `twiddles` holds 2^(log2 - 1) pairs of cosine and sine. The
/// results stand in bit-reversed order.
using Passes = void (*)(Data data, int log2, const double* twiddles, bool inverse);

void RunPasses(Data data, int log2, const double* twiddles, bool inverse);
/// The same, for processors with AVX2; on others it must not be called. Only there on some targets.
void RunPassesAvx2(Data data, int log2, const double* twiddles, bool inverse);

} // namespace bss::fft

#endif
