// WFFT: radix-2 Fourier transform of complex data, in place, with tables cached per length.
//
//     std::vector<std::complex<double>> a = ...;   // a power of two long
//     bss::WFFT fft;
//     fft.ComplexFFT(a);                           // A[k] = 1/sqrt(N) sum a[j] exp(-2 pi i j k / N)
//     fft.InverseComplexFFT(a);                    // back to the input, except for rounding
//
// Both directions are scaled by 1/sqrt(N), so the transform is unitary and preserves the sum of squared
// magnitudes. Input and output are in natural order. The method is that of Cooley and Tukey, Math. Comp. 19
// (1965) 297, in N log2(N) operations.
//
// REQUIRES: the length is a power of two. Any other length from 3 gives meaningless numbers within the vector
// and no error. Lengths 0 and 1 leave the data unchanged.
//
// Memory: the tables take 36 bytes per element and are computed when the length changes. Nothing else is
// allocated. All transforms throw std::bad_alloc if memory for the tables is short, and std::length_error for
// more than INT_MAX elements; the data are then unchanged.
//
// Threads: one object, one thread at a time; different objects are independent.

#ifndef BSS_MATH_WFFT_H
#define BSS_MATH_WFFT_H

#include "bss/Export.h"

#include <complex>
#include <vector>

namespace bss {

/// Complex Fourier transform with cached tables.
class KRTBSS_API WFFT {
public:
    /// Constructs an object without tables.
    WFFT();
    /// Copies the tables. Throws std::bad_alloc if memory is short.
    WFFT(const WFFT&);
    /// Copies the tables. Throws std::bad_alloc if memory is short.
    WFFT& operator=(const WFFT&);
    /// Frees the tables.
    virtual ~WFFT();

    /// Replaces `a` by its forward transform, with the kernel exp(-2 pi i j k / N).
    void ComplexFFT(std::vector<std::complex<double>>& a);
    /// Replaces `a` by its inverse transform, with the kernel exp(+2 pi i j k / N).
    void InverseComplexFFT(std::vector<std::complex<double>>& a);
    /// Replaces two vectors of one length by their forward transforms, in one pass over the tables. A `b`
    /// shorter than `a` is unchanged; of a longer `b` the first elements are transformed.
    void ComplexFFT2(std::vector<std::complex<double>>& a, std::vector<std::complex<double>>& b);
    /// Returns the position of the highest set bit, -1 for 0. A negative `n` has bit 31 set.
    static int ilog2(int n);

protected:
    /// Computes the tables for the current length. Throws std::bad_alloc if memory is short.
    void CreateArrays();
    /// Returns the low `bits` bits of a value in reverse order; 0 for `bits` below 1.
    static unsigned int ReverseBits(unsigned int value, int bits);

private:
    void UseLength(std::size_t length);
    void Transform(std::complex<double>* a, std::complex<double>* b);

    int m_nLog2 = 0;
    int m_nLength = 0;
    std::vector<double> m_aSine;
    std::vector<double> m_aNegativeSine;
    bool m_bInverse = false; // true while the negated sines are active
    std::vector<double> m_aCosine;
    std::vector<int> m_aBitReversal;
    std::vector<double> m_aTwiddles; // cosine and sine of each block, in the order of the blocks
};

} // namespace bss

#endif
