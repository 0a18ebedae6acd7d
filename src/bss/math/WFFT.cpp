#include "bss/math/WFFT.h"

#include "bss/math/private/FftPasses.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace bss {

namespace {

// Side of a tile in elements: each row of a tile fills whole cache lines in source and target.
constexpr int kTileLog2 = 4;
constexpr std::size_t kTile = std::size_t{1} << kTileLog2;

fft::Passes ChoosePasses() {
#ifdef KRTBSS_FFT_AVX2
    if (__builtin_cpu_supports("avx2")) {
        return &fft::RunPassesAvx2;
    }
#endif
    return &fft::RunPasses;
}

// Loads the square of elements with the indices a|middle|b: row a, column b.
void LoadTile(const std::complex<double>* data, std::size_t middle, int rowShift,
              std::complex<double>* tile) {
    for (std::size_t row = 0; row < kTile; ++row) {
        std::copy_n(data + (row << rowShift | middle << kTileLog2), kTile, tile + row * kTile);
    }
}

// Stores the elements of a tile, scaled, at the reversed indices b'|middle'|a'; `middle` is already reversed.
void StoreTile(const std::complex<double>* tile, std::size_t middle, int rowShift, const int* reversed,
               double scale, std::complex<double>* data) {
    for (std::size_t row = 0; row < kTile; ++row) {
        std::complex<double>* const to = data + (row << rowShift | middle << kTileLog2);
        const std::complex<double>* const from = tile + reversed[row];
        for (std::size_t column = 0; column < kTile; ++column) {
            to[column] = from[static_cast<std::size_t>(reversed[column]) * kTile] * scale;
        }
    }
}

// Permutes bit-reversed results into natural order and scales them, tile by tile: swapping single elements
// would load a cache line for each.
void ReorderTiles(std::complex<double>* data, int log2, const std::vector<int>& bitReversal, double scale) {
    const int rowShift = log2 - kTileLog2;
    const int middleBits = log2 - 2 * kTileLog2;
    int reversedTile[kTile];
    for (std::size_t i = 0; i < kTile; ++i) {
        reversedTile[i] = bitReversal[i] >> rowShift;
    }
    std::complex<double> here[kTile * kTile];
    std::complex<double> there[kTile * kTile];
    for (std::size_t middle = 0; middle < std::size_t{1} << middleBits; ++middle) {
        const auto reversed = static_cast<std::size_t>(bitReversal[middle << kTileLog2]) >> kTileLog2;
        if (reversed < middle) {
            continue;
        }
        LoadTile(data, middle, rowShift, here);
        if (reversed != middle) {
            LoadTile(data, reversed, rowShift, there);
            StoreTile(there, middle, rowShift, reversedTile, scale, data);
        }
        StoreTile(here, reversed, rowShift, reversedTile, scale, data);
    }
}

void Reorder(std::complex<double>* data, int length, const std::vector<int>& bitReversal, double scale) {
    for (int i = 0; i < length; ++i) {
        const int reversed = bitReversal[static_cast<std::size_t>(i)];
        if (reversed > i) {
            std::swap(data[i], data[reversed]);
        }
    }
    for (int i = 0; i < length; ++i) {
        data[i] *= scale;
    }
}

} // namespace

WFFT::WFFT() = default;
WFFT::WFFT(const WFFT&) = default;
WFFT& WFFT::operator=(const WFFT&) = default;
WFFT::~WFFT() = default;

int WFFT::ilog2(int n) {
    int position = -1;
    for (auto bits = static_cast<unsigned int>(n); bits != 0; bits >>= 1) {
        ++position;
    }
    return position;
}

unsigned int WFFT::ReverseBits(unsigned int value, int bits) {
    unsigned int reversed = 0;
    for (int i = 0; i < bits; ++i) {
        reversed = reversed << 1 | (value >> i & 1U);
    }
    return reversed;
}

void WFFT::CreateArrays() {
    const auto length = static_cast<std::size_t>(m_nLength);
    m_aSine.resize(length);
    m_aNegativeSine.resize(length);
    m_aCosine.resize(length);
    m_aBitReversal.resize(length);
    m_aTwiddles.resize(length);
    m_nLog2 = ilog2(m_nLength);
    const double step = 6.283185307179586 / m_nLength;
    double angle = 0.0;
    for (std::size_t k = 0; k < length; ++k) {
        m_aCosine[k] = std::cos(angle);
        m_aSine[k] = std::sin(angle);
        m_aNegativeSine[k] = -m_aSine[k];
        m_aBitReversal[k] = static_cast<int>(ReverseBits(static_cast<unsigned int>(k), m_nLog2));
        angle += step; // not k times step: kept for agreement with stored results
    }
    m_bInverse = false;
    // Block m of every stage starts at an element whose index, shifted right by the stage, is 2 m.
    for (std::size_t m = 0; m < length / 2; ++m) {
        const auto entry = static_cast<std::size_t>(m_aBitReversal[2 * m]);
        m_aTwiddles[2 * m] = m_aCosine[entry];
        m_aTwiddles[2 * m + 1] = m_aSine[entry];
    }
}

void WFFT::UseLength(std::size_t length) {
    if (length > static_cast<std::size_t>(INT_MAX)) {
        throw std::length_error("WFFT: more elements than an int counts");
    }
    if (static_cast<int>(length) == m_nLength) {
        return;
    }
    m_nLength = static_cast<int>(length);
    try {
        CreateArrays();
    } catch (...) {
        m_nLength = 0; // the tables are incomplete
        throw;
    }
}

void WFFT::Transform(std::complex<double>* a, std::complex<double>* b) {
    static const fft::Passes passes = ChoosePasses();
    if (m_nLength == 0) {
        return;
    }
    const bool isPowerOfTwo = (m_nLength & (m_nLength - 1)) == 0;
    if (isPowerOfTwo && m_nLength > 1) {
        passes({reinterpret_cast<double*>(a), reinterpret_cast<double*>(b)}, m_nLog2, m_aTwiddles.data(),
               m_bInverse);
    }
    const double scale = 1.0 / std::sqrt(static_cast<double>(m_nLength));
    for (std::complex<double>* const data : {a, b}) {
        if (data == nullptr) {
            continue;
        }
        if (isPowerOfTwo && m_nLog2 >= 2 * kTileLog2) {
            ReorderTiles(data, m_nLog2, m_aBitReversal, scale);
        } else {
            Reorder(data, m_nLength, m_aBitReversal, scale);
        }
    }
}

void WFFT::ComplexFFT(std::vector<std::complex<double>>& a) {
    UseLength(a.size());
    Transform(a.data(), nullptr);
}

void WFFT::InverseComplexFFT(std::vector<std::complex<double>>& a) {
    UseLength(a.size());
    m_bInverse = true;
    Transform(a.data(), nullptr);
    m_bInverse = false;
}

void WFFT::ComplexFFT2(std::vector<std::complex<double>>& a, std::vector<std::complex<double>>& b) {
    UseLength(a.size());
    Transform(a.data(), b.size() < a.size() ? nullptr : b.data());
}

} // namespace bss
