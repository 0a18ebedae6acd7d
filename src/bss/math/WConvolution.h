// WConvolution: smooths a sampled signal by a kernel that is given as a function.
//
//     std::vector<double> data = ...;              // any length
//     bss::WGaussianFunction kernel;
//     kernel.SetCoefficients({1.0, 0.0, 0.5, 0.0, 0.0});
//     bss::WConvolution convolution;
//     convolution.Convolve(data, &kernel, 0.01);   // samples 0.01 of the kernel's x unit apart
//
// The kernel is normalised, so that the mean of the signal stays; its height does not matter. It is sampled
// on both sides of 0 until both sides fall below a thousandth of its value at 0. The convolution is circular
// over the length, rounded up to a power of two; what is added there has the signal's mean.
//
// Memory: two work arrays a call, and the tables of WFFT. std::bad_alloc, and what the kernel throws, pass
// and leave the data as they were.
//
// Threads: one object serves one thread at a time.

#ifndef BSS_MATH_WCONVOLUTION_H
#define BSS_MATH_WCONVOLUTION_H

#include "bss/Export.h"
#include "bss/math/WFFT.h"

#include <vector>

namespace bss {

class WFunction;

class KRTBSS_API WConvolution {
public:
    WConvolution();
    WConvolution(const WConvolution&);
    WConvolution& operator=(const WConvolution&);
    virtual ~WConvolution();

    /// Smooths `data` in place; its length stays. `dx` is the spacing of the samples in the kernel's unit of
    /// x. The kernel, which is borrowed, must not be null; nothing happens to empty data.
    void Convolve(std::vector<double>& data, WFunction* kernel, double dx);

private:
    WFFT m_fft;
};

} // namespace bss

#endif
