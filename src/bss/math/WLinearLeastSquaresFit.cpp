#include "bss/math/WLinearLeastSquaresFit.h"

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/math/model/WLinearFunction.h"

#include <cmath>
#include <utility>

namespace bss {

WLinearLeastSquaresFit::WLinearLeastSquaresFit() = default;
WLinearLeastSquaresFit::WLinearLeastSquaresFit(const WLinearLeastSquaresFit& other) = default;
WLinearLeastSquaresFit& WLinearLeastSquaresFit::operator=(const WLinearLeastSquaresFit& other) = default;
WLinearLeastSquaresFit::~WLinearLeastSquaresFit() = default;

void WLinearLeastSquaresFit::SetFunction(WFunction* function) {
    WLeastSquaresFit::SetFunction(function);
    m_pLinearFunction = dynamic_cast<WLinearFunction*>(function);
}

void WLinearLeastSquaresFit::InitializeFit() {
    WLeastSquaresFit::InitializeFit();
    const auto n = static_cast<std::int32_t>(GetNumberOfCoefficients());
    m_adRightHandSide.assign(static_cast<std::size_t>(n), 0.0);
    m_anCoefficientIndex.clear();
    for (std::int32_t i = 0; i < n; ++i) {
        if (!GetCoefficientFixed(i)) {
            m_anCoefficientIndex.push_back(i);
        }
    }
    m_nFreeCoefficients = static_cast<std::int32_t>(m_anCoefficientIndex.size());
    for (std::int32_t i = 0; i < n; ++i) {
        if (GetCoefficientFixed(i)) {
            m_anCoefficientIndex.push_back(i);
        }
    }
}

int WLinearLeastSquaresFit::PerformFit() {
    if (m_pLinearFunction == nullptr) {
        throw WNEFitFailed(L"WLinearLeastSquaresFit::PerformFit:  No Linear function supplied.");
    }
    if (!HasWholeData()) {
        throw WNEFitFailed(
            L"WLinearLeastSquaresFit::PerformFit:  x or y is missing, or y or sigma is shorter than x.");
    }
    const std::size_t n = GetNumberOfCoefficients();
    if (m_anCoefficientIndex.size() != n || m_Covariance.size() != n) {
        InitializeFit(); // omitted, or the number of coefficients has changed since
    }
    const std::vector<double> before = *m_pCoefficients;
    SumNormalEquations();
    if (!SolveForFreeCoefficients()) {
        return 1;
    }
    ComputeStatistics();
    if (!std::isfinite(m_dChiSquared)) {
        *m_pCoefficients = before;
        InitializeFit();
        return 1;
    }
    SortCovarianceMatrix();
    m_pFunction->SetCovarianceMatrix(m_Covariance);
    m_pFunction->SetChiSquared(m_dChiSquared, static_cast<long>(GetNumberOfPoints()));
    return 0;
}

void WLinearLeastSquaresFit::EvaluateBasis(double x, std::vector<double>& basis) {
    m_pLinearFunction->BasisFunctionEvaluation(x);
    m_pLinearFunction->GetBasisFunctions(basis);
    if (basis.size() < GetNumberOfCoefficients()) {
        basis.resize(GetNumberOfCoefficients(), 0.0);
    }
}

void WLinearLeastSquaresFit::SumNormalEquations() {
    const auto free = static_cast<std::size_t>(m_nFreeCoefficients);
    const std::vector<std::int32_t>& index = m_anCoefficientIndex;
    for (std::size_t j = 0; j < free; ++j) {
        m_adRightHandSide[j] = 0.0;
        m_Covariance[j].assign(free, 0.0);
    }
    std::vector<double> basis;
    for (std::size_t i = 0; i < GetNumberOfPoints(); ++i) {
        EvaluateBasis((*m_pX)[i], basis);
        double y = (*m_pY)[i];
        for (std::size_t k = free; k < index.size(); ++k) {
            const auto held = static_cast<std::size_t>(index[k]);
            y -= basis[held] * (*m_pCoefficients)[held];
        }
        double weight = 1.0;
        if (m_pSigY != nullptr && (*m_pSigY)[i] != 0.0) {
            weight = 1.0 / ((*m_pSigY)[i] * (*m_pSigY)[i]);
        }
        for (std::size_t j = 0; j < free; ++j) {
            const double weighted = basis[static_cast<std::size_t>(index[j])] * weight;
            for (std::size_t k = 0; k <= j; ++k) {
                m_Covariance[j][k] += basis[static_cast<std::size_t>(index[k])] * weighted;
            }
            m_adRightHandSide[j] += weighted * y;
        }
    }
    for (std::size_t j = 1; j < free; ++j) {
        for (std::size_t k = 0; k < j; ++k) {
            m_Covariance[k][j] = m_Covariance[j][k];
        }
    }
}

bool WLinearLeastSquaresFit::SolveForFreeCoefficients() {
    const auto free = static_cast<unsigned>(m_nFreeCoefficients);
    if (GaussJ(m_Covariance, free, m_adRightHandSide) != 0) {
        return false;
    }
    if (!IsFinite(m_adRightHandSide) || !IsFinite(m_Covariance)) {
        return false;
    }
    for (std::size_t j = 0; j < free; ++j) {
        (*m_pCoefficients)[static_cast<std::size_t>(m_anCoefficientIndex[j])] = m_adRightHandSide[j];
    }
    return true;
}

void WLinearLeastSquaresFit::ComputeStatistics() {
    const std::size_t points = GetNumberOfPoints();
    const double mean = WeightedMean(*m_pY, m_pSigY);
    m_dChiSquared = 0.0;
    m_dReducedChiSquared = 0.0;
    double sumOfWeights = 0.0;
    double weightedTotal = 0.0;
    double plainResiduals = 0.0;
    double plainTotal = 0.0;
    std::vector<double> basis;
    for (std::size_t i = 0; i < points; ++i) {
        EvaluateBasis((*m_pX)[i], basis);
        double f = 0.0;
        for (std::size_t k = 0; k < m_pCoefficients->size(); ++k) {
            f += (*m_pCoefficients)[k] * basis[k];
        }
        const double residual = (*m_pY)[i] - f;
        const double deviation = (*m_pY)[i] - mean;
        double scaledResidual = residual;
        double scaledDeviation = deviation;
        if (m_pSigY != nullptr && (*m_pSigY)[i] != 0.0) {
            const double sigma = (*m_pSigY)[i];
            scaledResidual = residual / sigma;
            scaledDeviation = deviation / sigma;
            sumOfWeights += 1.0 / (sigma * sigma);
        }
        m_dChiSquared += scaledResidual * scaledResidual;
        weightedTotal += scaledDeviation * scaledDeviation;
        plainResiduals += residual * residual;
        plainTotal += deviation * deviation;
    }
    // Unsigned: wraps if there are fewer points than coefficients (kept for agreement with stored results).
    const double degrees = static_cast<double>(static_cast<std::uint32_t>(points) -
                                               static_cast<std::uint32_t>(m_nFreeCoefficients));
    if (sumOfWeights == 0.0) {
        sumOfWeights = 1.0;
    }
    if (degrees != 0.0) {
        m_dStdError = std::sqrt(m_dChiSquared / (degrees * sumOfWeights));
        m_dReducedChiSquared = m_dChiSquared / degrees;
    }
    if (weightedTotal / sumOfWeights == 0.0 || degrees == 0.0) {
        m_dAdjustedRSquared = 1.0;
    } else {
        m_dAdjustedRSquared = 1.0 - ((static_cast<double>(points) - 1.0) * (m_dChiSquared / sumOfWeights)) /
                                        (degrees * (weightedTotal / sumOfWeights));
    }
    m_dRSquared = plainTotal == 0.0 ? 1.0 : 1.0 - plainResiduals / plainTotal;
}

void WLinearLeastSquaresFit::SortCovarianceMatrix() {
    const std::size_t n = GetNumberOfCoefficients();
    if (m_anCoefficientIndex.size() <= n) {
        return; // always, since the list has one entry per coefficient
    }
    const matrix saved = m_Covariance;
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j) {
            const auto row = static_cast<std::size_t>(m_anCoefficientIndex[i]);
            const auto column = static_cast<std::size_t>(m_anCoefficientIndex[j]);
            if (row < saved.size() && column < saved[row].size() && j < m_Covariance[i].size()) {
                m_Covariance[i][j] = saved[row][column];
            }
        }
    }
}

} // namespace bss
