#include "bss/math/WNonLinearLeastSquaresFit.h"

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/math/WFunction.h"
#include "krtpal/debug.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iomanip>
#include <locale>
#include <sstream>

namespace bss {

namespace {

constexpr double kInitialLambda = 0.001;
constexpr double kLargestLambda = 1000.0;
constexpr double kSmallestReducedLambda = 1e-8;
constexpr double kNegligible = 1e-100;
constexpr double kLargestResidual = 1e80;
constexpr double kDegreesPerRadian = 57.2957795;

// Replaces a weight of 1.0, within 1e-6, by 100.0. Kept for agreement with stored results.
double ruledWeight(double weight) {
    const bool isOne = weight == 1.0 || std::fabs(weight - 1.0) <= 1e-6 * std::max(1.0, std::fabs(weight));
    return isOne ? 100.0 : weight;
}

constexpr std::size_t kPointsOfBlock = 64;

// Weighted derivatives of consecutive points, n per point, with their weights and residuals.
struct Block {
    const double* derivatives;
    const double* weights;
    const double* residuals;
    std::size_t points;
};

// Adds a block to beta and to the upper triangle of the normal matrix, for n coefficients known at compile
// time: the sums stay in registers.
template <std::size_t n>
void addBlockOf(const Block& block, double* beta, double* normal) {
    double b[n];
    double a[n][n];
    for (std::size_t j = 0; j < n; ++j) {
        b[j] = beta[j];
        for (std::size_t k = j; k < n; ++k) {
            a[j][k] = normal[j * n + k];
        }
    }
    for (std::size_t i = 0; i < block.points; ++i) {
        const double* d = block.derivatives + i * n;
        for (std::size_t j = 0; j < n; ++j) {
            b[j] += d[j] * block.weights[i] * block.residuals[i];
            for (std::size_t k = j; k < n; ++k) {
                a[j][k] += d[j] * d[k];
            }
        }
    }
    for (std::size_t j = 0; j < n; ++j) {
        beta[j] = b[j];
        for (std::size_t k = j; k < n; ++k) {
            normal[j * n + k] = a[j][k];
        }
    }
}

void addBlockOfMany(std::size_t n, const Block& block, double* beta, double* normal) {
    for (std::size_t i = 0; i < block.points; ++i) {
        const double* d = block.derivatives + i * n;
        for (std::size_t j = 0; j < n; ++j) {
            beta[j] += d[j] * block.weights[i] * block.residuals[i];
            for (std::size_t k = j; k < n; ++k) {
                normal[j * n + k] += d[j] * d[k];
            }
        }
    }
}

// Most models of the library have two to five coefficients.
void addBlock(std::size_t n, const Block& block, double* beta, double* normal) {
    switch (n) {
    case 2:
        return addBlockOf<2>(block, beta, normal);
    case 3:
        return addBlockOf<3>(block, beta, normal);
    case 4:
        return addBlockOf<4>(block, beta, normal);
    case 5:
        return addBlockOf<5>(block, beta, normal);
    default:
        return addBlockOfMany(n, block, beta, normal);
    }
}

void writeRow(std::wostringstream& text, const std::vector<double>& values) {
    text << L"[";
    const wchar_t* separator = L"";
    for (const double value : values) {
        text << separator << std::setw(14) << value;
        separator = L", ";
    }
    text << L"]";
}

// Sets the classic locale, so that traces do not depend on the process's locale.
void prepareTrace(std::wostringstream& text) {
    text.imbue(std::locale::classic());
    text << std::setprecision(4) << std::scientific << std::showpoint;
}

void writeLine(const wchar_t* text, std::size_t number) {
    OutputDebugStringW((text + std::to_wstring(number) + L"\n").c_str());
}

} // namespace

const double WNonLinearLeastSquaresFit::EPSILON = 5e-05;
bool WNonLinearLeastSquaresFit::m_bTrace = false;

// Caches the point weights during one fit, in which the sigmas do not change.
class WNonLinearLeastSquaresFit::WeightsOfOneFit {
public:
    explicit WeightsOfOneFit(const WNonLinearLeastSquaresFit& fit)
        : m_Fit(fit), m_bKeptBefore(fit.m_bWeightsKept) {
        if (!m_bKeptBefore) {
            fit.ComputePointWeights();
            fit.m_bWeightsKept = true;
        }
    }
    ~WeightsOfOneFit() { m_Fit.m_bWeightsKept = m_bKeptBefore; }
    WeightsOfOneFit(const WeightsOfOneFit&) = delete;
    WeightsOfOneFit& operator=(const WeightsOfOneFit&) = delete;

private:
    const WNonLinearLeastSquaresFit& m_Fit;
    bool m_bKeptBefore;
};

WNonLinearLeastSquaresFit::WNonLinearLeastSquaresFit(double epsilon) : m_dEpsilon(epsilon) {}

WNonLinearLeastSquaresFit::WNonLinearLeastSquaresFit(const WNonLinearLeastSquaresFit& other)
    : WLeastSquaresFit(other), m_dLambda(other.m_dLambda), m_dGamma(other.m_dGamma),
      m_dEpsilon(other.m_dEpsilon), m_dSumOfWeights(other.m_dSumOfWeights),
      m_nDegreesOfFreedom(other.m_nDegreesOfFreedom), m_nIterations(other.m_nIterations),
      m_nMaxIterations(other.m_nMaxIterations) {}

WNonLinearLeastSquaresFit& WNonLinearLeastSquaresFit::operator=(const WNonLinearLeastSquaresFit& other) {
    if (this == &other) {
        return *this;
    }
    WLeastSquaresFit::operator=(other);
    m_dLambda = other.m_dLambda;
    m_dGamma = other.m_dGamma;
    m_dEpsilon = other.m_dEpsilon;
    m_dSumOfWeights = other.m_dSumOfWeights;
    m_nDegreesOfFreedom = other.m_nDegreesOfFreedom;
    m_nIterations = other.m_nIterations;
    m_nMaxIterations = other.m_nMaxIterations;
    m_anFixed.clear();
    m_adSaved.clear();
    m_abLimits.clear();
    m_adLower.clear();
    m_adUpper.clear();
    m_adStep.clear();
    m_adBeta.clear();
    m_adScale.clear();
    m_bResidualsComplete = false;
    return *this;
}

WNonLinearLeastSquaresFit::~WNonLinearLeastSquaresFit() = default;

void WNonLinearLeastSquaresFit::SetFunction(WFunction* function) {
    WLeastSquaresFit::SetFunction(function);
    const std::size_t n = GetNumberOfCoefficients();
    if (function != nullptr) {
        m_adSaved = *m_pCoefficients;
    } else {
        m_adSaved.clear();
    }
    m_adStep.resize(n);
    m_adBeta.resize(n);
    m_abLimits.assign(n, false);
    m_adLower.assign(n, 0.0);
    m_adUpper.assign(n, 1.0);
    m_bResidualsComplete = false;
}

void WNonLinearLeastSquaresFit::InitializeFit() {
    WLeastSquaresFit::InitializeFit();
    m_dLambda = kInitialLambda;
    m_nDegreesOfFreedom = 0;
    m_nIterations = 0;
    m_dSumOfWeights = 0.0;
    m_dGamma = 0.0;
    if (m_pFunction != nullptr) {
        const std::size_t n = m_pCoefficients->size();
        m_adSaved = *m_pCoefficients;
        m_adStep.assign(n, 0.0);
        m_adBeta.assign(n, 0.0);
        m_adScale.assign(n, 0.0);
        m_anFixed.clear();
    }
}

void WNonLinearLeastSquaresFit::SetValueLimits(unsigned index, double lower, double upper) {
    if (index >= GetNumberOfCoefficients()) {
        return;
    }
    UseValueLimits(index, true);
    m_adLower[index] = lower;
    m_adUpper[index] = upper;
}

void WNonLinearLeastSquaresFit::UseValueLimits(unsigned index, bool use) {
    const std::size_t n = GetNumberOfCoefficients();
    if (index >= n) {
        return;
    }
    // A copied fit has no limits yet, and the function may have gained coefficients since SetFunction.
    if (m_abLimits.size() < n) {
        m_abLimits.resize(n, false);
        m_adLower.resize(n, 0.0);
        m_adUpper.resize(n, 1.0);
    }
    m_abLimits[index] = use;
}

void WNonLinearLeastSquaresFit::GetValueLimits(unsigned index, double& lower, double& upper) {
    if (index < GetNumberOfCoefficients() && index < m_abLimits.size()) {
        lower = m_adLower[index];
        upper = m_adUpper[index];
    }
}

int WNonLinearLeastSquaresFit::PerformFit() {
    if (m_pFunction == nullptr) {
        throw WNEFitFailed(L"WNonLinearLeastSquaresFit::PerformFit:  No function supplied.");
    }
    if (!HasWholeData()) {
        throw WNEFitFailed(
            L"WNonLinearLeastSquaresFit::PerformFit:  x or y is missing, or y or sigma is shorter than x.");
    }
    const WeightsOfOneFit weights(*this);
    PrepareWorkSpace();
    if (m_bTrace) {
        Report();
    }
    const efitresult result = Fit();
    switch (result) {
    case eGammaLambda:
    case eGammaEpsilon:
    case eEpsilon:
        break;
    default:
        if (m_bTrace) {
            OutputDebugStringW(L"!!!!! Fit Forced Off.\n");
        }
        Fail();
    }
    if (m_bTrace) {
        OutputDebugStringW(result == eGammaLambda    ? L"!!!!! Gamma-Lambda Test Passed.\n"
                           : result == eGammaEpsilon ? L"!!!!! Gamma-Epsilon Test Passed.\n"
                                                     : L"..... Epsilon Test Passed.\n");
    }
    ComputeCovarianceMatrix();
    if (!m_bNormalEquationsFinite || !IsFinite(m_Covariance)) {
        Fail();
    }
    m_pFunction->SetCovarianceMatrix(m_Covariance);
    m_pFunction->SetChiSquared(m_dChiSquared, static_cast<long>(GetNumberOfPoints()));
    ComputeStatistics();
    return 0;
}

void WNonLinearLeastSquaresFit::PrepareWorkSpace() {
    const std::size_t n = m_pCoefficients->size();
    m_anFixed.clear();
    for (std::size_t i = 0; i < n; ++i) {
        if (GetCoefficientFixed(static_cast<long>(i))) {
            m_anFixed.push_back(static_cast<std::int32_t>(i));
        }
    }
    m_nDegreesOfFreedom = static_cast<std::int32_t>(m_anFixed.size()) - static_cast<std::int32_t>(n) +
                          static_cast<std::int32_t>(GetNumberOfPoints());
    // The sizes differ in a copied fit and after a change of the function's number of coefficients.
    if (m_adSaved.size() != n) {
        m_adSaved = *m_pCoefficients;
    }
    m_adStep.resize(n);
    m_adBeta.resize(n);
    m_adScale.resize(n);
}

WNonLinearLeastSquaresFit::efitresult WNonLinearLeastSquaresFit::Fit() {
    const WeightsOfOneFit weights(*this);
    double plain = 0.0;
    m_dSumOfWeights = SumOfWeights();
    m_dChiSquared = SumOfSquares(plain);
    m_nIterations = 0;
    if (m_nMaxIterations == 0) {
        return eFailed;
    }
    do {
        ComputeAMatrix();
        ScaleAMatrix();
        const double previousChi = m_dChiSquared;
        for (bool accepted = false; !accepted;) {
            SolveAMatrix();
            TryStep();
            ComputeGamma();
            m_dChiSquared = SumOfSquares(plain);
            efitresult passed = eFailed;
            const bool usable = IsTrialUsable(previousChi, passed);
            if (usable && passed == eFailed) {
                accepted = true;
            } else if (usable && IsResultTrustworthy(previousChi)) {
                return passed;
            } else {
                const double lambda = m_dLambda;
                RejectTrial(previousChi);
                // A lambda of 0, below 0 or NaN does not grow, and the same trial would repeat forever.
                if (m_dLambda > kLargestLambda || !(m_dLambda > lambda)) {
                    return eFailed;
                }
            }
        }
        m_adSaved = *m_pCoefficients;
        if (m_dLambda >= kSmallestReducedLambda) {
            m_dLambda /= 10.0;
        }
        ++m_nIterations;
    } while (m_nIterations < m_nMaxIterations);
    return eFailed;
}

void WNonLinearLeastSquaresFit::TryStep() {
    for (std::size_t i = 0; i < m_adStep.size(); ++i) {
        (*m_pCoefficients)[i] = m_adStep[i] + m_adSaved[i];
    }
}

// Returns false if the trial must be rejected. Otherwise stores the test that ends the fit in `passed`, or
// leaves it at eFailed if the fit continues.
bool WNonLinearLeastSquaresFit::IsTrialUsable(double previousChi, efitresult& passed) {
    if (!std::isfinite(m_dChiSquared)) {
        return false;
    }
    if (previousChi >= m_dChiSquared) {
        if (GammaLambdaTest()) {
            passed = eGammaLambda;
        } else if (EpsilonTest()) {
            passed = eEpsilon;
        }
        return true;
    }
    if (m_dGamma <= 45.0) {
        if (GammaEpsilonTest(previousChi)) {
            passed = eGammaEpsilon;
        }
        return true;
    }
    return false;
}

// Returns false if a passed test is meaningless: derivatives or sigmas that are NaN give steps of 0.0, and a
// previous chi-squared that is NaN is never above a new one.
bool WNonLinearLeastSquaresFit::IsResultTrustworthy(double previousChi) const {
    return !std::isnan(previousChi) && std::isfinite(m_dChiSquared) && m_bResidualsComplete &&
           m_bWeightsAreNumbers && m_bNormalEquationsFinite && IsFinite(m_adStep);
}

void WNonLinearLeastSquaresFit::RejectTrial(double previousChi) {
    m_dLambda *= 10.0;
    m_dChiSquared = previousChi;
    m_pFunction->ResetData();
}

void WNonLinearLeastSquaresFit::ComputeAMatrix() {
    const std::size_t n = GetNumberOfCoefficients();
    m_adBeta.assign(n, 0.0);
    m_adNormal.assign(n * n, 0.0);
    SumNormalEquations();

    m_Covariance.resize(n);
    for (std::size_t j = 0; j < n; ++j) {
        m_Covariance[j].resize(n);
    }
    for (std::size_t j = 0; j < n; ++j) {
        for (std::size_t k = j; k < n; ++k) {
            m_Covariance[j][k] = m_adNormal[j * n + k];
            m_Covariance[k][j] = m_adNormal[j * n + k];
        }
    }
    for (const std::int32_t index : m_anFixed) {
        const auto i = static_cast<std::size_t>(index);
        m_Covariance[i][i] = 1.0;
    }
    m_bNormalEquationsFinite = IsFinite(m_adBeta) && IsFinite(m_Covariance);
}

// Processes the points in blocks: the virtual calls of the model first, then the sums, which stay in
// registers. Each sum adds the points in their order, so the blocks do not change its rounding.
void WNonLinearLeastSquaresFit::SumNormalEquations() {
    const std::size_t n = m_adBeta.size();
    const std::size_t points = GetNumberOfPoints();
    const std::vector<double>& weights = PointWeights();
    const bool hasResiduals = HasResidualsOfCoefficients();
    std::vector<double>& d = m_adDerivatives;
    m_adBlock.resize(kPointsOfBlock * n);
    double blockResiduals[kPointsOfBlock];
    for (std::size_t first = 0; first < points; first += kPointsOfBlock) {
        const std::size_t count = std::min(kPointsOfBlock, points - first);
        double* row = m_adBlock.data();
        for (std::size_t i = 0; i < count; ++i, row += n) {
            const double x = (*m_pX)[first + i];
            blockResiduals[i] =
                hasResiduals ? m_adResiduals[first + i] : (*m_pY)[first + i] - m_pFunction->Evaluate(x);
            m_pFunction->ComputeDerivatives(x, d);
            if (d.size() != n) {
                d.resize(n, 0.0);
            }
            for (const std::int32_t index : m_anFixed) {
                d[static_cast<std::size_t>(index)] = 0.0; // also after weighting: a weight is finite
            }
            const double weight = weights[first + i];
            for (std::size_t k = 0; k < n; ++k) {
                row[k] = d[k] * weight;
            }
        }
        addBlock(n, {m_adBlock.data(), weights.data() + first, blockResiduals, count}, m_adBeta.data(),
                 m_adNormal.data());
    }
    for (const std::int32_t index : m_anFixed) {
        m_adBeta[static_cast<std::size_t>(index)] = 0.0; // a NaN residual times 0.0 is NaN
    }
}

void WNonLinearLeastSquaresFit::ScaleAMatrix() {
    const std::size_t n = m_Covariance.size();
    m_adScale.resize(n);
    for (std::size_t i = 0; i < n; ++i) {
        m_adScale[i] = SafeSQRT(m_Covariance[i][i]);
    }
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            const double factor = m_adScale[i] * m_adScale[j];
            const double scaled = factor > kNegligible ? m_Covariance[i][j] / factor : 0.0;
            m_Covariance[i][j] = scaled;
            m_Covariance[j][i] = scaled;
        }
        m_Covariance[i][i] = 1.0;
    }
}

void WNonLinearLeastSquaresFit::SolveAMatrix() {
    const std::size_t n = m_adStep.size();
    m_Work = m_Covariance;
    for (std::size_t i = 0; i < n; ++i) {
        m_Work[i][i] = m_dLambda + 1.0;
    }
    // Only the inverse is used: no right-hand side.
    GaussJ(m_Work, static_cast<unsigned>(n), m_NoColumns, 0);
    for (std::size_t i = 0; i < n; ++i) {
        m_adStep[i] = 0.0;
        if (m_adScale[i] > kNegligible) {
            for (std::size_t j = 0; j < n; ++j) {
                if (m_adScale[j] > kNegligible) {
                    m_adStep[i] += m_Work[i][j] * m_adBeta[j] / m_adScale[j];
                }
            }
            m_adStep[i] /= m_adScale[i];
        }
    }
}

void WNonLinearLeastSquaresFit::ComputeGamma() {
    double dot = 0.0;
    double gradient = 0.0;
    double length = 0.0;
    for (std::size_t i = 0; i < m_adStep.size(); ++i) {
        dot += m_adStep[i] * m_adBeta[i];
        if (std::fabs(m_adScale[i]) > 1e-50) {
            gradient += m_adBeta[i] * m_adBeta[i] / (m_adScale[i] * m_adScale[i]);
            length += m_adStep[i] * m_adStep[i] * (m_adScale[i] * m_adScale[i]);
        }
    }
    const double product = gradient * length;
    if (!(product > kNegligible)) {
        m_dGamma = 0.0;
        return;
    }
    const double cosine = dot / std::sqrt(product);
    const double sine = SafeSQRT(1.0 - cosine * cosine);
    m_dGamma = std::atan2(sine, cosine) * kDegreesPerRadian;
}

void WNonLinearLeastSquaresFit::ComputeCovarianceMatrix() {
    ComputeAMatrix();
    GaussJ(m_Covariance, static_cast<unsigned>(m_Covariance.size()), m_NoColumns, 0);
    for (const std::int32_t index : m_anFixed) {
        const auto i = static_cast<std::size_t>(index);
        m_Covariance[i][i] = 0.0;
    }
}

bool WNonLinearLeastSquaresFit::EpsilonTest() {
    for (std::size_t i = 0; i < m_adStep.size(); ++i) {
        if (!(std::fabs(m_adStep[i] / (std::fabs((*m_pCoefficients)[i]) + 0.001)) < m_dEpsilon)) {
            return false;
        }
    }
    return true;
}

bool WNonLinearLeastSquaresFit::GammaLambdaTest() {
    return m_dGamma >= 90.0 && m_dLambda >= 1.0;
}

bool WNonLinearLeastSquaresFit::GammaEpsilonTest(double previousChi) {
    for (;;) {
        bool isLeft = false; // true if halving still changes an entry, which must be finite
        for (std::size_t i = 0; i < m_adStep.size(); ++i) {
            m_adStep[i] *= 0.5;
            (*m_pCoefficients)[i] = m_adSaved[i] + m_adStep[i];
            isLeft = isLeft || (m_adStep[i] != 0.0 && std::isfinite(m_adStep[i]));
        }
        double plain = 0.0;
        m_dChiSquared = SumOfSquares(plain);
        if (previousChi > m_dChiSquared) {
            return false;
        }
        if (EpsilonTest() || !isLeft) {
            return true;
        }
    }
}

double WNonLinearLeastSquaresFit::SumOfSquares(double& plain) const {
    plain = 0.0;
    m_bResidualsComplete = false;
    const std::size_t points = GetNumberOfPoints();
    const std::vector<double>& weights = PointWeights();
    m_adResiduals.resize(points);
    double chi = 0.0;
    for (std::size_t i = 0; i < points; ++i) {
        const double residual = (*m_pY)[i] - m_pFunction->Evaluate((*m_pX)[i]);
        if (std::fabs(residual) > kLargestResidual) {
            return kLargestResidual;
        }
        const double weighted = weights[i] * residual;
        plain += residual * residual;
        chi += weighted * weighted;
        m_adResiduals[i] = residual;
    }
    // Copied after the evaluations, which may replace a coefficient such as a width of 0.0.
    m_adResidualCoefficients = *m_pCoefficients;
    m_bResidualsComplete = true;
    m_dPlainSum = plain;
    m_dPenalisedSum = PenaltyOfAllLimits() * chi;
    return m_dPenalisedSum;
}

double WNonLinearLeastSquaresFit::PenaltyOfAllLimits() const {
    double penalty = 1.0;
    const std::size_t n = std::min<std::size_t>(GetNumberOfCoefficients(), m_abLimits.size());
    for (std::size_t i = 0; i < n; ++i) {
        if (m_abLimits[i]) {
            penalty *= LimitsPenaltyFunction((*m_pCoefficients)[i], m_adLower[i], m_adUpper[i]);
        }
    }
    return penalty;
}

double WNonLinearLeastSquaresFit::LimitsPenaltyFunction(double value, double lower, double upper) const {
    const double below = 1.0 - 1.0 / (std::exp((lower - value) / (std::fabs(lower) * 0.05)) + 1.0);
    const double above = 1.0 - 1.0 / (std::exp((value - upper) / (std::fabs(upper) * 0.05)) + 1.0);
    return 1.0 + 1000.0 * (below + above);
}

bool WNonLinearLeastSquaresFit::HasResidualsOfCoefficients() const {
    const std::vector<double>& now = *m_pCoefficients;
    // Compared as bytes: 0.0 and -0.0 differ, and a NaN equals itself.
    return m_bResidualsComplete && m_adResiduals.size() == GetNumberOfPoints() &&
           m_adResidualCoefficients.size() == now.size() &&
           (now.empty() ||
            std::memcmp(m_adResidualCoefficients.data(), now.data(), now.size() * sizeof(double)) == 0);
}

double WNonLinearLeastSquaresFit::SumOfWeights() const {
    double sum = 0.0;
    for (const double weight : PointWeights()) {
        sum += weight;
    }
    return sum;
}

double WNonLinearLeastSquaresFit::TotalSumOfSquares(double& sumOfWeights, double& plainTotal) const {
    sumOfWeights = 0.0;
    plainTotal = 0.0;
    if (m_pX == nullptr || m_pY == nullptr) {
        return 0.0;
    }
    const double weightedMean = WeightedMean(*m_pY, m_pSigY);
    const double plainMean = WeightedMean(*m_pY, nullptr);
    const std::vector<double>& weights = PointWeights();
    double total = 0.0;
    for (std::size_t i = 0; i < GetNumberOfPoints(); ++i) {
        const double deviation = (*m_pY)[i] - weightedMean;
        const double plainDeviation = (*m_pY)[i] - plainMean;
        if (std::fabs(deviation) > kLargestResidual) {
            return kLargestResidual;
        }
        sumOfWeights += weights[i];
        plainTotal += plainDeviation * plainDeviation;
        const double weighted = weights[i] * deviation;
        total += weighted * weighted;
    }
    return total;
}

double WNonLinearLeastSquaresFit::Weight(unsigned index) const {
    if (m_pSigY == nullptr || index >= m_pSigY->size() || !((*m_pSigY)[index] > kNegligible)) {
        return 1.0;
    }
    return 1.0 / (*m_pSigY)[index];
}

const std::vector<double>& WNonLinearLeastSquaresFit::PointWeights() const {
    if (!m_bWeightsKept) {
        ComputePointWeights();
    }
    return m_adWeights;
}

void WNonLinearLeastSquaresFit::ComputePointWeights() const {
    const std::size_t count = m_pY == nullptr ? 0 : m_pY->size();
    m_adWeights.resize(count);
    m_bWeightsAreNumbers = true;
    for (std::size_t i = 0; i < count; ++i) {
        m_adWeights[i] = ruledWeight(Weight(static_cast<unsigned>(i)));
        if (m_pSigY != nullptr && i < m_pSigY->size() && std::isnan((*m_pSigY)[i])) {
            m_bWeightsAreNumbers = false;
        }
    }
}

double WNonLinearLeastSquaresFit::SafeSQRT(double value) {
    return value < 0.0 ? 0.0 : std::sqrt(value);
}

void WNonLinearLeastSquaresFit::ComputeStatistics() {
    const std::size_t points = GetNumberOfPoints();
    double sumOfWeights = 0.0;
    double plainTotal = 0.0;
    const double total = TotalSumOfSquares(sumOfWeights, plainTotal);
    double plain = m_dPlainSum;
    const double residuals = HasResidualsOfCoefficients() ? m_dPenalisedSum : SumOfSquares(plain);
    if (sumOfWeights == 0.0) {
        sumOfWeights = 1.0;
    }
    const std::size_t free = m_pCoefficients->size() - m_anFixed.size();
    // Unsigned: wraps if there are fewer points than coefficients (kept for agreement with stored results).
    const std::uint32_t degrees = static_cast<std::uint32_t>(points) - static_cast<std::uint32_t>(free);
    if (degrees != 0) {
        const auto df = static_cast<double>(degrees);
        m_dStdError = SafeSQRT(m_dChiSquared / (df * sumOfWeights));
        if (total / sumOfWeights != 0.0) {
            m_dAdjustedRSquared = 1.0 - ((static_cast<double>(points) - 1.0) * (residuals / sumOfWeights)) /
                                            (df * (total / sumOfWeights));
        }
        m_dReducedChiSquared = m_dChiSquared / df;
    }
    m_dRSquared = plainTotal == 0.0 ? 1.0 : 1.0 - plain / plainTotal;
}

void WNonLinearLeastSquaresFit::Report() const {
    const std::size_t n = m_pCoefficients->size();
    OutputDebugStringW(L"============= Non-Linear Least-Squares Fit ==================\n");
    writeLine(L"Number of data points:           ", GetNumberOfPoints());
    writeLine(L"Number of parameters:            ", n);
    writeLine(L"Number of independent variables: ", n - m_anFixed.size());
}

void WNonLinearLeastSquaresFit::Fail() const {
    Report();
    OutputDebugStringW(L"WNonLinearLeastSquaresFit::PerformFit:  Failed to fit\n");
    throw WNEFitFailed(L"Nonlinear least squares fit");
}

std::wstring WNonLinearLeastSquaresFit::GenerateMatrixString(const matrix& values) {
    std::wostringstream text;
    prepareTrace(text);
    text << L"[";
    const wchar_t* separator = L"";
    for (const std::vector<double>& row : values) {
        text << separator;
        writeRow(text, row);
        separator = L" ";
    }
    text << L"]";
    return text.str();
}

std::wstring WNonLinearLeastSquaresFit::GenerateVectorString(const std::vector<double>& values) {
    std::wostringstream text;
    prepareTrace(text);
    writeRow(text, values);
    text << L", Chi\u00B2=" << m_dChiSquared;
    return text.str();
}

} // namespace bss
