// Measures a converged non-linear fit against the GNU Scientific Library and MINPACK's C port.
//
// All solvers get the same data, starting values and analytic derivatives and the same relative step
// tolerance of 5e-5, and each fit ends with its covariance matrix. The time includes the allocation of a
// fit's work space. The program first checks that all reach the same sum of squared residuals (within 1e-6)
// and fails if not. It then measures, and prints a table with the ratio to the fastest peer.
//
//     bench_fit [--benchmark_... options]

#include "bss/math/WNonLinearLeastSquaresFit.h"
#include "bss/math/model/WCumulantsFunction.h"
#include "bss/math/model/WGaussianFunction.h"

#include <benchmark/benchmark.h>
#include <cminpack.h>
#include <gsl/gsl_errno.h>
#include <gsl/gsl_multifit_nlinear.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr double kStepTolerance = 5e-5;

// The models as a user of the peers would write them, without a class and open to inlining, with the
// arithmetic of the library's models.
struct Gaussian {
    using Function = bss::WGaussianFunction;
    static constexpr std::size_t kCount = 5;

    static double Peak(const double* c, double x, double& u) {
        u = (x - c[1]) / (c[2] * 0.60056120439);
        return std::fabs(u) < 25.0 ? std::exp(u * -1.0 * u) : 0.0;
    }
    static double Value(const double* c, double x) {
        double u = 0.0;
        return c[0] * Peak(c, x, u) + c[3] + c[4] * x;
    }
    static void Derivatives(const double* c, double x, double* d, std::size_t stride) {
        double u = 0.0;
        const double g = Peak(c, x, u);
        const double w = 2.0 * c[0] * g * u;
        d[0] = g;
        d[stride] = w / (c[2] * 0.60056120439);
        d[2 * stride] = w * u / c[2];
        d[3 * stride] = 1.0;
        d[4 * stride] = x;
    }
};

struct Cumulants {
    using Function = bss::WCumulantsFunction;
    static constexpr std::size_t kCount = 4;

    static double Value(const double* c, double x) {
        const double q = x * x * c[3] * 0.5 + 1.0;
        return std::exp(c[2] * c[2] * -2.0 * x) * c[1] * (q * q) + c[0];
    }
    static void Derivatives(const double* c, double x, double* d, std::size_t stride) {
        const double q = x * x * c[3] * 0.5 + 1.0;
        const double e = std::exp(c[2] * c[2] * -2.0 * x);
        d[0] = 1.0;
        d[stride] = q * q * e;
        d[2 * stride] = d[stride] * -4.0 * c[1] * c[2] * x;
        d[3 * stride] = (x * x * x * x * c[3] * 0.5 + x * x) * (e * c[1]);
    }
};

struct Data {
    std::vector<double> x;
    std::vector<double> y;
    std::vector<double> start;
};

struct Result {
    double sumOfSquares = 0.0;
    std::vector<double> coefficients;
    long evaluations = 0; // evaluations of the model, times points
    long derivatives = 0; // differentiations of the model, times points
};

template <class Function>
class Counted : public Function {
public:
    using Function::Evaluate;
    double Evaluate(double x) override {
        ++evaluations;
        return Function::Evaluate(x);
    }
    void ComputeDerivatives(double x, std::vector<double>& d) override {
        ++derivatives;
        Function::ComputeDerivatives(x, d);
    }

    long evaluations = 0;
    long derivatives = 0;
};

template <class Function>
void fitByLibrary(const Data& data, Function& function, Result& result) {
    function.SetCoefficients(data.start);
    bss::WNonLinearLeastSquaresFit fit(kStepTolerance);
    fit.SetFunction(&function);
    fit.SetX(data.x);
    fit.SetY(data.y);
    fit.InitializeFit();
    fit.PerformFit();
    result.sumOfSquares = fit.GetChiSquared() / 10000.0; // data without sigmas have the weight 100
    result.coefficients = function.GetCoefficients();
}

template <class Model>
Result timedFitByLibrary(const Data& data) {
    typename Model::Function function;
    Result result;
    fitByLibrary(data, function, result);
    return result;
}

template <class Model>
Result countedFitByLibrary(const Data& data) {
    Counted<typename Model::Function> function;
    Result result;
    fitByLibrary(data, function, result);
    result.evaluations = function.evaluations;
    result.derivatives = function.derivatives;
    return result;
}

template <class Model>
int minpackCallback(void* context, int m, int, const double* c, double* residuals, double* jacobian,
                    int stride, int wanted) {
    const Data& data = *static_cast<const Data*>(context);
    for (std::size_t i = 0; i < static_cast<std::size_t>(m); ++i) {
        if (wanted == 1) {
            residuals[i] = Model::Value(c, data.x[i]) - data.y[i];
        } else {
            Model::Derivatives(c, data.x[i], jacobian + i, static_cast<std::size_t>(stride));
        }
    }
    return 0;
}

template <class Model>
Result fitByMinpackTo(const Data& data, double sumTolerance, double relativeStep) {
    const auto points = static_cast<int>(data.x.size());
    constexpr auto kN = static_cast<int>(Model::kCount);
    std::vector<double> residuals(data.x.size());
    std::vector<double> jacobian(data.x.size() * Model::kCount);
    std::vector<double> diagonal(Model::kCount);
    std::vector<double> qtf(Model::kCount);
    std::vector<double> work(3 * Model::kCount);
    std::vector<double> longWork(data.x.size());
    std::vector<int> pivots(Model::kCount);
    int evaluations = 0;
    int derivatives = 0;
    Result result;
    result.coefficients = data.start;
    const int info =
        lmder(minpackCallback<Model>, const_cast<Data*>(&data), points, kN, result.coefficients.data(),
              residuals.data(), jacobian.data(), points, sumTolerance, relativeStep, 0.0, 500,
              diagonal.data(), 1, 100.0, 0, &evaluations, &derivatives, pivots.data(), qtf.data(),
              work.data(), work.data() + kN, work.data() + 2 * kN, longWork.data());
    // 6, 7 and 8 mean that no further progress is possible: the regular end of a fit without tolerance.
    if (info < 1 || info == 5) {
        throw std::runtime_error("MINPACK ends with " + std::to_string(info));
    }
    const double norm = enorm(points, residuals.data());
    result.sumOfSquares = norm * norm;
    result.evaluations = static_cast<long>(evaluations) * points;
    result.derivatives = static_cast<long>(derivatives) * points;
    covar(kN, jacobian.data(), points, pivots.data(), 1e-14, work.data());
    return result;
}

template <class Model>
Result fitByMinpack(const Data& data) {
    return fitByMinpackTo<Model>(data, 1e-8, kStepTolerance);
}

// MINPACK's step test combines all coefficients and may pass before the smaller ones converge; the tighter
// tolerance makes it continue.
template <class Model>
Result fitByMinpackOn(const Data& data) {
    return fitByMinpackTo<Model>(data, 1e-14, 1e-8);
}

// The solution to which the others are compared.
template <class Model>
Result tightFit(const Data& data) {
    return fitByMinpackTo<Model>(data, 1e-15, 1e-15);
}

template <class Model>
int gslResiduals(const gsl_vector* c, void* context, gsl_vector* residuals) {
    const Data& data = *static_cast<const Data*>(context);
    for (std::size_t i = 0; i < data.x.size(); ++i) {
        residuals->data[i * residuals->stride] = Model::Value(c->data, data.x[i]) - data.y[i];
    }
    return GSL_SUCCESS;
}

template <class Model>
int gslJacobian(const gsl_vector* c, void* context, gsl_matrix* jacobian) {
    const Data& data = *static_cast<const Data*>(context);
    for (std::size_t i = 0; i < data.x.size(); ++i) {
        Model::Derivatives(c->data, data.x[i], jacobian->data + i * jacobian->tda, 1);
    }
    return GSL_SUCCESS;
}

template <class Model>
Result fitByGsl(const Data& data, const gsl_multifit_nlinear_solver* solver) {
    gsl_multifit_nlinear_parameters parameters = gsl_multifit_nlinear_default_parameters();
    parameters.trs = gsl_multifit_nlinear_trs_lm;
    parameters.solver = solver;
    gsl_multifit_nlinear_workspace* work =
        gsl_multifit_nlinear_alloc(gsl_multifit_nlinear_trust, &parameters, data.x.size(), Model::kCount);
    gsl_multifit_nlinear_fdf problem = {};
    problem.f = gslResiduals<Model>;
    problem.df = gslJacobian<Model>;
    problem.n = data.x.size();
    problem.p = Model::kCount;
    problem.params = const_cast<Data*>(&data);
    const gsl_vector_const_view start = gsl_vector_const_view_array(data.start.data(), Model::kCount);
    gsl_multifit_nlinear_init(&start.vector, &problem, work);
    int info = 0;
    const int status =
        gsl_multifit_nlinear_driver(500, kStepTolerance, 1e-8, 0.0, nullptr, nullptr, &info, work);
    gsl_matrix* covariance = gsl_matrix_alloc(Model::kCount, Model::kCount);
    gsl_multifit_nlinear_covar(gsl_multifit_nlinear_jac(work), 0.0, covariance);
    gsl_matrix_free(covariance);
    Result result;
    const gsl_vector* residuals = gsl_multifit_nlinear_residual(work);
    for (std::size_t i = 0; i < residuals->size; ++i) {
        result.sumOfSquares += gsl_vector_get(residuals, i) * gsl_vector_get(residuals, i);
    }
    const gsl_vector* position = gsl_multifit_nlinear_position(work);
    for (std::size_t i = 0; i < position->size; ++i) {
        result.coefficients.push_back(gsl_vector_get(position, i));
    }
    result.evaluations = static_cast<long>(problem.nevalf * data.x.size());
    result.derivatives = static_cast<long>(problem.nevaldf * data.x.size());
    gsl_multifit_nlinear_free(work);
    if (status != GSL_SUCCESS) {
        throw std::runtime_error(std::string("GSL ends with: ") + gsl_strerror(status));
    }
    return result;
}

template <class Model>
Result fitByGslQr(const Data& data) {
    return fitByGsl<Model>(data, gsl_multifit_nlinear_solver_qr);
}

template <class Model>
Result fitByGslCholesky(const Data& data) {
    return fitByGsl<Model>(data, gsl_multifit_nlinear_solver_cholesky);
}

// Returns a peak of height 90 on a slope, with noise of standard deviation 1 from a fixed seed.
Data noisyPeak(std::size_t points) {
    Data data;
    std::mt19937_64 generator(20240229);
    std::normal_distribution<double> noise(0.0, 1.0);
    const double truth[] = {90.0, 21.0, 6.0, 3.0, 0.1};
    for (std::size_t i = 0; i < points; ++i) {
        const double x = 40.0 * static_cast<double>(i) / static_cast<double>(points - 1);
        data.x.push_back(x);
        data.y.push_back(Gaussian::Value(truth, x) + noise(generator));
    }
    data.start = {70.0, 20.0, 8.0, 0.0, 0.0};
    return data;
}

// Returns the measured correlogram from 300 ns to ten times the lag at which the signal falls to 2 %.
Data correlogram() {
    const std::string path = KRTBSS_SOURCE_DIR "/data/correlograms/mw002_m0_avg_090deg.csv";
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    Data all;
    double x = 0.0;
    double y = 0.0;
    for (char comma = 0; file >> x >> comma >> y;) {
        all.x.push_back(x);
        all.y.push_back(y);
    }
    if (all.x.size() < 100) {
        throw std::runtime_error("cannot read the correlogram '" + path + "'");
    }
    double baseline = 0.0;
    for (std::size_t i = all.y.size() - 30; i < all.y.size(); ++i) {
        baseline += all.y[i] / 30.0;
    }
    const auto first =
        static_cast<std::size_t>(std::lower_bound(all.x.begin(), all.x.end(), 2.9e-7) - all.x.begin());
    const double amplitude = all.y[first] - baseline;
    const auto fallenTo = [&](double fraction) {
        std::size_t i = first;
        while (i + 1 < all.y.size() && all.y[i] - baseline > fraction * amplitude) {
            ++i;
        }
        return all.x[i];
    };
    const double rate = 0.5 / fallenTo(std::exp(-1.0));
    const double last = 10.0 * fallenTo(0.02);
    Data data;
    for (std::size_t i = first; i < all.x.size() && all.x[i] <= last; ++i) {
        data.x.push_back(all.x[i]);
        data.y.push_back(all.y[i]);
    }
    data.start = {baseline, amplitude, std::sqrt(rate), 0.05 * rate * rate};
    return data;
}

struct Fit {
    std::string solver;
    std::function<Result(const Data&)> timed;
    std::function<Result(const Data&)> counted;
};

struct Problem {
    std::string name;
    Data data;
    std::vector<double> solution;
    std::vector<Fit> fits;
};

template <class Model>
Problem problem(std::string name, Data data) {
    const Result tight = tightFit<Model>(data);
    return {std::move(name),
            std::move(data),
            tight.coefficients,
            {{"krtbss", timedFitByLibrary<Model>, countedFitByLibrary<Model>},
             {"MINPACK lmder", fitByMinpack<Model>, fitByMinpack<Model>},
             {"MINPACK, 1e-8", fitByMinpackOn<Model>, fitByMinpackOn<Model>},
             {"GSL lm, QR", fitByGslQr<Model>, fitByGslQr<Model>},
             {"GSL lm, Cholesky", fitByGslCholesky<Model>, fitByGslCholesky<Model>}}};
}

// Collects the shortest processor time of each benchmark's repetitions, since the machine may have other
// load.
class Collector : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration) {
                double& best = seconds.try_emplace(run.run_name.function_name, 1e9).first->second;
                best = std::min(best, run.cpu_accumulated_time / static_cast<double>(run.iterations));
            }
        }
    }

    std::map<std::string, double> seconds;
};

std::string key(const Problem& problem, const Fit& fit) {
    return "Non-linear fit/" + problem.name + "/" + fit.solver;
}

// Runs each fit once, untimed. Returns false and prints the difference if the sums of squares disagree.
bool agree(const Problem& problem, std::vector<Result>& results) {
    for (const Fit& fit : problem.fits) {
        results.push_back(fit.counted(problem.data));
        const double difference = std::fabs(results.back().sumOfSquares / results.front().sumOfSquares - 1.0);
        if (!(difference <= 1e-6)) {
            std::fprintf(stderr, "%s: the sum of squares is %.9g, not %.9g\n", key(problem, fit).c_str(),
                         results.back().sumOfSquares, results.front().sumOfSquares);
            return false;
        }
    }
    return true;
}

// Returns the number of decimal digits of the worst coefficient that agree with the solution.
double digits(const std::vector<double>& coefficients, const std::vector<double>& solution) {
    double worst = 15.0;
    for (std::size_t i = 0; i < solution.size(); ++i) {
        const double error = std::fabs(coefficients[i] / solution[i] - 1.0);
        worst = std::min(worst, error > 0.0 ? -std::log10(error) : 15.0);
    }
    return worst;
}

void printTable(const Problem& problem, const std::vector<Result>& results,
                std::map<std::string, double>& seconds) {
    double fastestPeer = 1e9;
    for (std::size_t i = 1; i < problem.fits.size(); ++i) {
        fastestPeer = std::min(fastestPeer, seconds[key(problem, problem.fits[i])]);
    }
    const auto points = static_cast<long>(problem.data.x.size());
    std::printf("\n%s, %ld points, sum of squares %.9g\n", problem.name.c_str(), points,
                results[0].sumOfSquares);
    std::printf("| %-16s | us per fit | evaluations | derivatives | digits | time / fastest peer |\n",
                "solver");
    std::printf(
        "|------------------|-----------:|------------:|------------:|-------:|--------------------:|\n");
    for (std::size_t i = 0; i < problem.fits.size(); ++i) {
        const double time = seconds[key(problem, problem.fits[i])];
        std::printf("| %-16s | %10.1f | %5ld passes | %5ld passes | %6.1f | %19.2f |\n",
                    problem.fits[i].solver.c_str(), time * 1e6, results[i].evaluations / points,
                    results[i].derivatives / points, digits(results[i].coefficients, problem.solution),
                    time / fastestPeer);
    }
}

int run(int argc, char** argv) {
    gsl_set_error_handler_off();
    const std::vector<Problem> problems = {problem<Gaussian>("Gaussian 200", noisyPeak(200)),
                                           problem<Gaussian>("Gaussian 10000", noisyPeak(10000)),
                                           problem<Cumulants>("Correlogram", correlogram())};
    std::vector<std::vector<Result>> results(problems.size());
    for (std::size_t i = 0; i < problems.size(); ++i) {
        if (!agree(problems[i], results[i])) {
            return 1;
        }
        for (const Fit& fit : problems[i].fits) {
            benchmark::RegisterBenchmark(key(problems[i], fit).c_str(),
                                         [&data = problems[i].data, &fit](benchmark::State& state) {
                                             for (auto step : state) {
                                                 static_cast<void>(step);
                                                 benchmark::DoNotOptimize(fit.timed(data).sumOfSquares);
                                             }
                                         })
                ->MinTime(0.02)
                ->Repetitions(25);
        }
    }
    // Interleaved, so that other load affects all alike. The caller's options follow and take precedence.
    std::string interleaved = "--benchmark_enable_random_interleaving=true";
    std::vector<char*> arguments(argv, argv + argc);
    arguments.insert(arguments.begin() + 1, interleaved.data());
    auto count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return 2;
    }
    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    for (std::size_t i = 0; i < problems.size(); ++i) {
        printTable(problems[i], results[i], collector.seconds);
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "bench_fit: %s\n", failure.what());
        return 1;
    }
}
