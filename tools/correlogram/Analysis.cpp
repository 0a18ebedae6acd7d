#include "Analysis.h"

#include "Models.h"
#include "common/Failure.h"

#include "bss/exception/WExceptionCatalogue.h"
#include "bss/math/WLinearLeastSquaresFit.h"
#include "bss/math/WNonLinearLeastSquaresFit.h"
#include "bss/math/model/WPolynomialFunction.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace correlogram {

using tools::Failure;
using tools::QuoteStart;

namespace {

constexpr std::size_t kBaselinePoints = 30;
constexpr std::size_t kInterceptPoints = 5;
constexpr std::size_t kLeastPoints = 40;
constexpr std::size_t kLeastFitted = 10;
constexpr double kEndOfDecay = 0.02;
constexpr double kRangeBehindDecay = 10.0;
constexpr double kBoltzmann = 1.380649e-23; // J/K, exact (SI of 2019)

// A non-linear fit that tells which stop test ended it. The fit keeps the name of the test to itself, but
// lets a derived class run the bare iteration, which returns it. So PerformFit runs the iteration once to
// learn the test, puts the starting coefficients back and performs the fit; the same arithmetic takes the
// same way. Coefficients that are held fixed and a lambda other than the default are not supported.
class TellingFit : public bss::WNonLinearLeastSquaresFit {
public:
    int PerformFit() override {
        static const char* const kNames[] = {"forced-off", "gamma-lambda", "gamma-epsilon", "epsilon"};
        const std::vector<double> start = GetFunction()->GetCoefficients();
        m_sStopTest = kNames[0];
        m_sStopTest = kNames[static_cast<unsigned>(Fit())];
        GetFunction()->SetCoefficients(start);
        InitializeFit();
        return WNonLinearLeastSquaresFit::PerformFit();
    }

    // "forced-off" for a fit that failed; empty before PerformFit.
    const std::string& StopTest() const { return m_sStopTest; }

private:
    std::string m_sStopTest;
};

// The fitted points, the lag in units of the decay time. Near one in size, the coefficients suit the
// tolerances of the fit, which are absolute for small values; and the same sample measured at another angle
// takes the same way to its minimum.
struct FitData {
    std::vector<double> x;
    std::vector<double> y;
    std::vector<double> sigma; // empty for equal weights
    double unit;               // seconds
};

std::string At(const Curve& curve, std::size_t point) {
    return QuoteStart(curve.file) + ", line " + std::to_string(curve.line[point]) + ": ";
}

double Mean(const double* values, std::size_t count) {
    return std::accumulate(values, values + count, 0.0) / static_cast<double>(count);
}

double Deviation(const double* values, std::size_t count, double mean) {
    double sum = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        sum += (values[i] - mean) * (values[i] - mean);
    }
    return std::sqrt(sum / static_cast<double>(count - 1));
}

// The first point whose signal above the baseline is at or below that part of the intercept. There is always
// one: not all of the last points can lie above their own mean.
std::size_t FallenTo(const Analysis& analysis, double part) {
    const std::vector<double>& signal = analysis.curve.signal;
    std::size_t i = analysis.first;
    while (i + 1 < signal.size() && signal[i] - analysis.baseline > part * analysis.intercept) {
        ++i;
    }
    return i;
}

void SelectRange(Analysis& analysis, double firstLag) {
    const Curve& curve = analysis.curve;
    const std::size_t size = curve.lag.size();
    const auto begin = std::lower_bound(curve.lag.begin(), curve.lag.end(), firstLag * (1.0 - 1e-9));
    analysis.first = static_cast<std::size_t>(begin - curve.lag.begin());
    const std::size_t available = size - analysis.first;
    if (available < kLeastPoints) {
        throw Failure(
            At(curve, size - 1) + "the file ends with only " + std::to_string(available) +
            (available == 1 ? " point" : " points") +
            (firstLag > 0.0 ? " from the lag " + FormatGeneral(firstLag, 6) + " s on" : std::string()) +
            ", where at least " + std::to_string(kLeastPoints) + " are needed.");
    }
    const double* tail = curve.signal.data() + (size - kBaselinePoints);
    analysis.baseline = Mean(tail, kBaselinePoints);
    analysis.intercept = Mean(curve.signal.data() + analysis.first, kInterceptPoints) - analysis.baseline;
    const double noise = Deviation(tail, kBaselinePoints, analysis.baseline);
    if (!(analysis.intercept > 3.0 * noise && std::isfinite(analysis.intercept))) {
        throw Failure(At(curve, analysis.first) +
                      "no decay begins here, the signal does not rise above the noise of the last " +
                      std::to_string(kBaselinePoints) + " points.");
    }
    const double lastLag = kRangeBehindDecay * curve.lag[FallenTo(analysis, kEndOfDecay)];
    const auto end = std::upper_bound(begin, curve.lag.end(), lastLag);
    analysis.count = static_cast<std::size_t>(end - begin);
    if (analysis.count < kLeastFitted) {
        throw Failure(At(curve, analysis.first + analysis.count - 1) + "the decay ends after only " +
                      std::to_string(analysis.count) + " points, where at least " +
                      std::to_string(kLeastFitted) + " are needed.");
    }
    analysis.decayTime = curve.lag[FallenTo(analysis, 1.0 / std::numbers::e)];
}

// A weight that is 1 within 1e-6 is the fit's sign for "no weight", and counts as 100. A standard deviation
// that is 1 by chance moves out of its way by 3 millionths.
double AvoidUnitWeight(double sigma) {
    return std::abs(sigma - 1.0) < 2e-6 ? 1.000003 : sigma;
}

FitData MakeFitData(const Analysis& analysis) {
    FitData data;
    data.unit = analysis.decayTime;
    const Curve& curve = analysis.curve;
    for (std::size_t i = analysis.first; i < analysis.first + analysis.count; ++i) {
        data.x.push_back(curve.lag[i] / data.unit);
        data.y.push_back(curve.signal[i]);
        if (!curve.sigma.empty()) {
            data.sigma.push_back(AvoidUnitWeight(curve.sigma[i]));
        }
    }
    return data;
}

// ln(signal) = ln(amplitude) - 2 rate t + moment t^2 for short lags: a parabola through the points above a
// fifth of the intercept. Their logarithms are as uncertain as one over the signal.
Start EstimateStart(const Analysis& analysis, const FitData& data) {
    std::vector<double> x;
    std::vector<double> y;
    std::vector<double> sigma;
    for (std::size_t i = 0; i < data.x.size(); ++i) {
        const double signal = data.y[i] - analysis.baseline;
        if (signal < 0.2 * analysis.intercept) {
            break;
        }
        x.push_back(data.x[i]);
        y.push_back(std::log(signal));
        sigma.push_back(analysis.intercept / signal);
    }
    bss::WPolynomialFunction parabola;
    parabola.SetNumberOfBasisFunctions(3);
    bss::WLinearLeastSquaresFit fit;
    fit.SetFunction(&parabola);
    fit.SetX(x);
    fit.SetY(y);
    fit.SetSigY(sigma);
    fit.InitializeFit();
    const double rate = x.size() > 3 && fit.PerformFit() == 0 ? -0.5 * parabola.GetCoefficient(1) : 0.0;
    const bool isUsable = std::isfinite(rate) && rate > 0.1 && rate < 10.0;
    Start start{analysis.baseline, analysis.intercept, isUsable ? rate : 0.5, 0.0};
    // No width at all would be a stationary point of the Gaussian form, from which no fit can move.
    const double moment = isUsable ? parabola.GetCoefficient(2) : 0.0;
    const double square = start.decayRate * start.decayRate;
    start.secondMoment = std::clamp(std::isfinite(moment) ? moment : 0.0, 0.02 * square, 0.5 * square);
    return start;
}

// In seconds, from a unit of time: every coefficient carries that unit to its own power.
std::vector<double> ScaleFactors(const Model& model, double unit) {
    std::vector<double> factors;
    for (const ModelCoefficient& coefficient : model.coefficients) {
        factors.push_back(std::pow(unit, coefficient.timePower));
    }
    return factors;
}

// The covariance that the standard errors come from. With measured standard deviations it is the fit's, never
// made smaller by a small chi-squared; without them the scatter of the residuals is the only measure of noise
// there is, large or small.
Matrix ErrorCovariance(const bss::WFunction& function, const TellingFit& fit, const FitData& data,
                       const std::vector<double>& factors) {
    const double noise = data.sigma.empty() ? fit.GetReducedChiSquared() : function.GetChiSquaredFactor();
    Matrix covariance = function.GetCovarianceMatrix();
    for (std::size_t i = 0; i < covariance.size(); ++i) {
        for (std::size_t j = 0; j < covariance[i].size(); ++j) {
            covariance[i][j] *= noise * factors[i] * factors[j];
        }
    }
    return covariance;
}

std::string Ascii(const std::wstring& text) {
    std::string ascii;
    std::transform(text.begin(), text.end(), std::back_inserter(ascii),
                   [](wchar_t c) { return static_cast<char>(c); });
    return ascii;
}

void DeriveSize(const Analysis& analysis, const Distribution& distribution, FitResult& result) {
    const Conditions& conditions = analysis.conditions;
    const double q = analysis.scatteringVector;
    const Measured rate = distribution.decayRate;
    result.decayRate = rate;
    result.polydispersity = distribution.polydispersity;
    result.diffusion = {rate.value / (q * q), rate.error / (q * q)};
    const double radius = kBoltzmann * conditions.temperature /
                          (6.0 * std::numbers::pi * conditions.viscosity * result.diffusion->value);
    result.radius = {radius, radius * rate.error / std::abs(rate.value)};
}

void ReadResults(const Analysis& analysis, const Model& model, const TellingFit& fit, const FitData& data,
                 const std::vector<double>& start, FitResult& result) {
    bss::WFunction& function = *result.function;
    const std::vector<double> factors = ScaleFactors(model, data.unit);
    const Matrix covariance = ErrorCovariance(function, fit, data, factors);
    for (std::size_t i = 0; i < factors.size(); ++i) {
        const auto index = static_cast<long>(i);
        function.SetCoefficient(index, function.GetCoefficient(index) * factors[i]);
        result.coefficients.push_back({Ascii(function.GetCoefficientName(index)),
                                       model.coefficients[i].meaning,
                                       start[i] * factors[i],
                                       {function.GetCoefficient(index), std::sqrt(covariance[i][i])}});
    }
    result.chiSquared = fit.GetChiSquared();
    result.reducedChiSquared = fit.GetReducedChiSquared();
    result.rSquared = fit.GetRSquared();
    DeriveSize(analysis, model.distribution(function, covariance), result);
}

FitResult RunModel(const Analysis& analysis, const Model& model, const FitData& data, const Start& start) {
    FitResult result;
    result.name = model.name;
    result.function = model.makeFunction();
    const std::vector<double> values = model.startingValues(start);
    result.function->SetCoefficients(values);
    TellingFit fit;
    fit.SetFunction(result.function.get());
    fit.SetX(data.x);
    fit.SetY(data.y);
    if (!data.sigma.empty()) {
        fit.SetSigY(data.sigma);
    }
    const std::wstring module = L"correlogram, " + std::wstring(result.name.begin(), result.name.end());
    try {
        fit.InitializeFit();
        fit.PerformFit();
        ReadResults(analysis, model, fit, data, values, result);
    } catch (const bss::WNestedException& cause) {
        result.failure = std::make_unique<bss::WNEFitFailed>(module, &cause);
    } catch (const std::exception& error) {
        const std::string text = error.what();
        const bss::WNEUnexpectedException cause(std::wstring(text.begin(), text.end()));
        result.failure = std::make_unique<bss::WNEFitFailed>(module, &cause);
    }
    result.stopTest = fit.StopTest();
    result.iterations = fit.Iterations();
    return result;
}

FitResult RunFit(const Analysis& analysis, const Model& model, const FitData& data, const Start& start) {
    FitResult result = RunModel(analysis, model, data, start);
    if (model.isOutOfRange != nullptr && model.isOutOfRange(*result.function)) {
        result = RunModel(analysis, *model.replacement, data, start);
        result.note = model.note;
    }
    return result;
}

} // namespace

bool Analysis::HasConverged() const {
    return std::all_of(fits.begin(), fits.end(), [](const FitResult& fit) { return fit.HasConverged(); });
}

Analysis Analyse(Curve curve, const Conditions& conditions, double firstLag) {
    Analysis analysis;
    analysis.curve = std::move(curve);
    analysis.conditions = conditions;
    analysis.scatteringVector = 4.0 * std::numbers::pi * conditions.refractiveIndex / conditions.wavelength *
                                std::sin(conditions.angle * std::numbers::pi / 180.0 / 2.0);
    SelectRange(analysis, firstLag);
    const FitData data = MakeFitData(analysis);
    const Start start = EstimateStart(analysis, data);
    for (const Model& model : Models()) {
        analysis.fits.push_back(RunFit(analysis, model, data, start));
    }
    return analysis;
}

} // namespace correlogram
