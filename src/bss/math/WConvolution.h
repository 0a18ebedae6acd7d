// WConvolution: smooths a sampled signal by a kernel that is given as a function.
//
//     std::vector<double> data = ...;              // any length
//     bss::WGaussianFunction kernel;
//     kernel.SetCoefficients({1.0, 0.0, 0.5, 0.0, 0.0});
//     bss::WConvolution convolution;
//     convolution.Convolve(data, &kernel, 0.01);   // samples 0.01 of the kernel's x unit apart
//
// The kernel is normalised to the sum of its samples: the mean of the signal is preserved, and the height of
// the kernel has no effect. The kernel is sampled on both sides of 0, up to the first pair of samples that
// are both below a thousandth of its value at 0. It need not be even.
//
// The convolution is circular over the length rounded up to a power of two; the padding has the signal's
// mean. It is computed by the convolution theorem with two forward transforms and one inverse transform of
// WFFT.
//
// Memory: two complex work arrays per call, and the tables of WFFT, which are cached per length.
//
// Threads: one object, one thread at a time; different objects are independent.

#ifndef BSS_MATH_WCONVOLUTION_H
#define BSS_MATH_WCONVOLUTION_H

#include "bss/Export.h"
#include "bss/math/WFFT.h"

#include <vector>

namespace bss {

class WFunction;

/// Smooths signals by a kernel, with cached Fourier tables.
class KRTBSS_API WConvolution {
public:
    /// Constructs an object without tables.
    WConvolution();
    /// Copies the tables. Throws std::bad_alloc if memory is short.
    WConvolution(const WConvolution&);
    /// Copies the tables. Throws std::bad_alloc if memory is short.
    WConvolution& operator=(const WConvolution&);
    /// Frees the tables.
    virtual ~WConvolution();

    /// Smooths `data` in place; its length is unchanged, and empty data do nothing. `dx` is the distance of
    /// two samples in the kernel's unit of x. The kernel is borrowed for the call. REQUIRES: `kernel` is not
    /// null. Throws what the kernel throws, std::bad_alloc, and std::length_error for more than 2^30 samples;
    /// `data` is then unchanged.
    void Convolve(std::vector<double>& data, WFunction* kernel, double dx);

private:
    WFFT m_fft;
};

} // namespace bss

#endif
