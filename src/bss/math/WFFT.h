// WFFT: radix-2 Fourier transform of complex data, in place, with tables kept from one transform to the next
// of the same length.
//
//     std::vector<std::complex<double>> a = ...;   // a power of two long
//     bss::WFFT fft;
//     fft.ComplexFFT(a);                           // A[k] = 1/sqrt(N) sum a[j] exp(-2 pi i j k / N)
//     fft.InverseComplexFFT(a);                    // and back
//
// Both directions carry 1/sqrt(N): the transform is unitary, and keeps the sum of squares.
//
// The length must be a power of two. Another length (from 3 on) gives numbers without meaning, inside the
// vector and without a failure; 0 and 1 leave the data as they are.
//
// Memory: the tables take 48 bytes an element, and are made when a length is first met; std::bad_alloc passes
// and leaves the data as they were. Otherwise nothing is allocated. No failure is reported.
//
// Threads: one object serves one thread at a time; different objects are independent.

#ifndef BSS_MATH_WFFT_H
#define BSS_MATH_WFFT_H

#include "bss/Export.h"

#include <complex>
#include <vector>

namespace bss {

class KRTBSS_API WFFT {
public:
    WFFT();
    WFFT(const WFFT&);
    WFFT& operator=(const WFFT&);
    virtual ~WFFT();

    /// Forward transform of `a`.
    void ComplexFFT(std::vector<std::complex<double>>& a);
    /// Inverse transform of `a`.
    void InverseComplexFFT(std::vector<std::complex<double>>& a);
    /// Forward transforms of two vectors of one length, which share each look at the tables. A `b` shorter
    /// than `a` stays as it is; of a longer one the first elements are transformed.
    void ComplexFFT2(std::vector<std::complex<double>>& a, std::vector<std::complex<double>>& b);
    /// The position of the highest set bit; -1 for 0.
    static int ilog2(int n);

protected:
    /// Makes the tables for the present length.
    void CreateArrays();
    /// The low `bits` bits of a value in reverse order; 0 for bits below 1.
    static unsigned int ReverseBits(unsigned int value, int bits);

private:
    void UseLength(std::size_t length);
    void Transform(std::complex<double>* a, std::complex<double>* b);

    int m_nLog2 = 0;
    int m_nLength = 0;
    std::vector<double> m_aSine;
    std::vector<double> m_aNegativeSine;
    bool m_bInverse = false; ///< the active table of sines is the negated one
    std::vector<double> m_aCosine;
    std::vector<int> m_aBitReversal;
    std::vector<double>
        m_aTwiddles; ///< cosine and sine of each block, in the order in which blocks meet them
};

} // namespace bss

#endif
