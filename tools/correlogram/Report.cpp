#include "Report.h"

#include "common/Json.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace correlogram {

namespace {

using Cell = std::function<std::string(const FitResult&)>;

std::string Padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

class Table {
public:
    explicit Table(const Analysis& analysis) : m_Analysis(analysis) {}

    void Add(const std::string& label, const Cell& cell) {
        std::vector<std::string> row{label};
        for (const FitResult& fit : m_Analysis.fits) {
            row.push_back(cell(fit));
        }
        m_Rows.push_back(std::move(row));
    }

    // As Add, with a dash for fits that failed.
    void AddResult(const std::string& label, const Cell& cell) {
        Add(label, [&](const FitResult& fit) { return fit.HasConverged() ? cell(fit) : std::string("-"); });
    }

    std::string Text() const {
        std::vector<std::size_t> widths(m_Rows.front().size());
        for (const auto& row : m_Rows) {
            for (std::size_t i = 0; i < row.size(); ++i) {
                widths[i] = std::max(widths[i], row[i].size() + 3);
            }
        }
        std::string text;
        for (const auto& row : m_Rows) {
            std::string line;
            for (std::size_t i = 0; i < row.size(); ++i) {
                line += Padded(row[i], widths[i]);
            }
            line.resize(line.find_last_not_of(' ') + 1);
            text += line;
            text += '\n';
        }
        return text;
    }

private:
    const Analysis& m_Analysis;
    std::vector<std::vector<std::string>> m_Rows;
};

// The same coefficient of several fits shares a row when it means the same in them.
void AddCoefficients(const Analysis& analysis, Table& table) {
    std::vector<std::pair<std::string, std::string>> labels;
    for (const FitResult& fit : analysis.fits) {
        for (const Coefficient& coefficient : fit.coefficients) {
            const std::pair label{coefficient.name, coefficient.meaning};
            if (std::find(labels.begin(), labels.end(), label) == labels.end()) {
                labels.push_back(label);
            }
        }
    }
    std::stable_sort(labels.begin(), labels.end(),
                     [](const auto& left, const auto& right) { return left.first < right.first; });
    for (const auto& [name, meaning] : labels) {
        std::string label = name;
        label.append(" ").append(meaning);
        table.AddResult(label, [&name = name, &meaning = meaning](const FitResult& fit) {
            for (const Coefficient& coefficient : fit.coefficients) {
                if (coefficient.name == name && coefficient.meaning == meaning) {
                    return FormatMeasured(coefficient.fitted);
                }
            }
            return std::string("-");
        });
    }
}

std::string Scaled(const std::optional<Measured>& measured, double scale) {
    return measured ? FormatMeasured(Measured{measured->value * scale, measured->error * scale}) : "-";
}

std::string Heading(const Analysis& analysis) {
    const Conditions& conditions = analysis.conditions;
    const std::vector<double>& lag = analysis.curve.lag;
    return analysis.curve.file + ": " + std::to_string(analysis.count) + " of " + std::to_string(lag.size()) +
           " points fitted, lags " + FormatGeneral(lag[analysis.first], 4) + " to " +
           FormatGeneral(lag[analysis.first + analysis.count - 1], 4) + " s\n" +
           FormatGeneral(conditions.wavelength * 1e9, 6) + " nm, " + FormatGeneral(conditions.angle, 6) +
           " degrees, " + FormatGeneral(conditions.temperature, 6) + " K, " +
           FormatGeneral(conditions.viscosity * 1e3, 6) + " mPa s, refractive index " +
           FormatGeneral(conditions.refractiveIndex, 6) + "\n\n";
}

std::string Notes(const Analysis& analysis) {
    std::string notes;
    for (const FitResult& fit : analysis.fits) {
        notes += fit.note.empty() ? "" : "\n" + fit.note + "\n";
    }
    if (analysis.curve.sigma.empty()) {
        return notes + "\nErrors are standard errors from the scatter of the residuals. Without standard "
                       "deviations every point\n"
                       "weighs 100: chi-squared is 10,000 times the sum of the squared residuals.\n";
    }
    return notes + "\nErrors are standard errors from the standard deviations of the points, scaled up where "
                   "the reduced\n"
                   "chi-squared is above 1.\n";
}

// In 8 significant digits.
tools::Json JsonNumber(double value) {
    return std::isfinite(value) ? tools::Token(FormatGeneral(value, 8)) : tools::Json();
}

tools::Json JsonValue(const std::optional<Measured>& measured) {
    return measured ? JsonNumber(measured->value) : tools::Json();
}

tools::Json JsonFit(const FitResult& fit) {
    tools::Json coefficients = tools::Json::array();
    for (const Coefficient& coefficient : fit.coefficients) {
        coefficients.push_back({{"name", coefficient.name},
                                {"value", JsonNumber(coefficient.fitted.value)},
                                {"standard_error", JsonNumber(coefficient.fitted.error)}});
    }
    const bool hasConverged = fit.HasConverged();
    return {{"name", fit.name},
            {"coefficients", coefficients},
            {"chi_squared", hasConverged ? JsonNumber(fit.chiSquared) : tools::Json()},
            {"r_squared", hasConverged ? JsonNumber(fit.rSquared) : tools::Json()},
            {"iterations", fit.iterations},
            {"stop_test", fit.stopTest},
            {"decay_rate_per_s", JsonValue(fit.decayRate)},
            {"polydispersity_index", JsonValue(fit.polydispersity)},
            {"diffusion_m2_per_s", JsonValue(fit.diffusion)},
            {"radius_m", JsonValue(fit.radius)},
            {"radius_error_m", fit.radius ? JsonNumber(fit.radius->error) : tools::Json()}};
}

} // namespace

std::string TableReport(const Analysis& analysis) {
    Table table(analysis);
    table.Add("", [](const FitResult& fit) { return fit.name; });
    AddCoefficients(analysis, table);
    table.AddResult("chi-squared", [](const FitResult& fit) { return FormatGeneral(fit.chiSquared, 5); });
    table.AddResult("R squared", [](const FitResult& fit) { return FormatFixed(fit.rSquared, 6); });
    table.Add("iterations", [](const FitResult& fit) { return std::to_string(fit.iterations); });
    table.Add("stop test", [](const FitResult& fit) { return fit.stopTest; });
    table.AddResult("decay rate (1/s)", [](const FitResult& fit) { return FormatMeasured(fit.decayRate); });
    table.AddResult("polydispersity index",
                    [](const FitResult& fit) { return FormatMeasured(fit.polydispersity); });
    table.AddResult("diffusion coefficient (m^2/s)",
                    [](const FitResult& fit) { return FormatMeasured(fit.diffusion); });
    table.AddResult("hydrodynamic radius (nm)", [](const FitResult& fit) { return Scaled(fit.radius, 1e9); });
    return Heading(analysis) + table.Text() + Notes(analysis);
}

std::string JsonReport(const Analysis& analysis) {
    tools::Json fits = tools::Json::array();
    for (const FitResult& fit : analysis.fits) {
        fits.push_back(JsonFit(fit));
    }
    return tools::Indented(
               {{"file", ValidUtf8(analysis.curve.file)}, {"points", analysis.count}, {"fits", fits}}) +
           "\n";
}

std::string VerboseReport(const Analysis& analysis) {
    std::string text = "baseline " + FormatGeneral(analysis.baseline, 6) + ", intercept " +
                       FormatGeneral(analysis.intercept, 6) + ", decay time " +
                       FormatGeneral(analysis.decayTime, 6) +
                       " s (unit of time of the fits), scattering vector " +
                       FormatGeneral(analysis.scatteringVector, 6) + " 1/m\n";
    for (const FitResult& fit : analysis.fits) {
        text += fit.name + ": ";
        if (!fit.HasConverged()) {
            text += "failed after " + std::to_string(fit.iterations) + " iterations\n";
            continue;
        }
        text += "started at";
        for (const Coefficient& coefficient : fit.coefficients) {
            text += " " + coefficient.name + " = " + FormatGeneral(coefficient.start, 5) + ",";
        }
        text += " reduced chi-squared " + FormatGeneral(fit.reducedChiSquared, 5) + "\n";
    }
    return text;
}

} // namespace correlogram
