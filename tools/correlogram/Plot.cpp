#include "Plot.h"

#include "Axis.h"
#include "common/Failure.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace correlogram {

using tools::PathOf;

namespace {

// All places in pixels of the picture; y grows downwards.
constexpr double kWidth = 960.0;
constexpr double kHeight = 720.0;
constexpr double kLeft = 100.0;
constexpr double kRight = kWidth - 28.0;
constexpr double kTop = 76.0;
constexpr double kMainBottom = 464.0;
constexpr double kResidualTop = 496.0;
constexpr double kBottom = 650.0;

struct Look {
    const char* colour; // told apart with every kind of colour vision (Okabe and Ito)
    const char* dashes;
    const char* width;
    double dot; // radius of a residual
};

// Wider lines lie below, so that curves on top of one another all stay visible.
constexpr Look kLooks[] = {
    {"#0072b2", "none", "3.6", 2.0}, {"#e69f00", "none", "2", 3.2}, {"#a0006e", "6 5", "2", 1.7}};

std::string Number(double value) {
    return FormatFixed(std::isfinite(value) ? std::clamp(value, -1e5, 1e5) : -1e5, 2);
}

std::string Escape(const std::string& text) {
    std::string escaped;
    for (const char c : ValidUtf8(text)) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            escaped += static_cast<unsigned char>(c) < 0x20U ? '?' : c;
        }
    }
    return escaped;
}

std::string Line(double x1, double y1, double x2, double y2, const std::string& style) {
    return "<line x1=\"" + Number(x1) + "\" y1=\"" + Number(y1) + "\" x2=\"" + Number(x2) + "\" y2=\"" +
           Number(y2) + "\" " + style + "/>\n";
}

std::string Rect(double left, double top, double right, double bottom, const std::string& style) {
    return "<rect x=\"" + Number(left) + "\" y=\"" + Number(top) + "\" width=\"" + Number(right - left) +
           "\" height=\"" + Number(bottom - top) + "\" " + style + "/>\n";
}

std::string Text(double x, double y, const std::string& style, const std::string& markup) {
    return "<text x=\"" + Number(x) + "\" y=\"" + Number(y) + "\" " + style + ">" + markup + "</text>\n";
}

std::string Circle(double x, double y, double radius, const std::string& style) {
    return "<circle cx=\"" + Number(x) + "\" cy=\"" + Number(y) + "\" r=\"" + Number(radius) + "\" " + style +
           "/>\n";
}

std::string PathStep(bool isFirst, double x, double y) {
    std::string step(1, isFirst ? 'M' : 'L');
    return step.append(Number(x)).append(",").append(Number(y));
}

std::string Upright(double y, const std::string& markup) {
    return "<text transform=\"translate(18," + Number(y) +
           ") rotate(-90)\" text-anchor=\"middle\" font-size=\"16\">" + markup + "</text>\n";
}

// Everything that is drawn for one analysis shares the axes.
class Picture {
public:
    explicit Picture(const Analysis& analysis)
        : m_Analysis(analysis), m_End(analysis.first + analysis.count),
          m_Lag(analysis.curve.lag.front(), analysis.curve.lag.back(), kLeft, kRight),
          m_Residuals(Residuals()), m_Signal(SignalAxis()), m_Residual(ResidualAxis()) {}

    std::string Draw() const {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"960\" height=\"720\" viewBox=\"0 0 960 "
               "720\" "
               "font-family=\"Helvetica, Arial, 'DejaVu Sans', sans-serif\" font-size=\"14\" "
               "fill=\"#222222\">\n"
               "<title>" +
               Escape(m_Analysis.curve.file) + "</title>\n<defs>\n<clipPath id=\"main\">" +
               Rect(kLeft, kTop, kRight, kMainBottom, "") + "</clipPath>\n<clipPath id=\"residuals\">" +
               Rect(kLeft, kResidualTop, kRight, kBottom, "") + "</clipPath>\n</defs>\n" +
               Rect(0, 0, kWidth, kHeight, "fill=\"#ffffff\"") + Heading() +
               Panel(m_Signal, kTop, kMainBottom) + Panel(m_Residual, kResidualTop, kBottom) + LagLabels() +
               "<g clip-path=\"url(#main)\">\n" + Points() + Curves() +
               "</g>\n<g clip-path=\"url(#residuals)\">\n" + ResidualPoints() + "</g>\n" + Frames() +
               Legend() + "</svg>\n";
    }

private:
    bool IsFitted(std::size_t i) const { return i >= m_Analysis.first && i < m_End; }

    // A row a fit, in its order; empty for one that failed.
    std::vector<std::vector<double>> Residuals() const {
        const Curve& curve = m_Analysis.curve;
        std::vector<std::vector<double>> residuals;
        for (const FitResult& fit : m_Analysis.fits) {
            residuals.emplace_back();
            for (std::size_t i = m_Analysis.first; i < m_End && fit.HasConverged(); ++i) {
                const double residual = curve.signal[i] - fit.function->Evaluate(curve.lag[i]);
                residuals.back().push_back(curve.sigma.empty() ? residual : residual / curve.sigma[i]);
            }
        }
        return residuals;
    }

    LinearAxis SignalAxis() const {
        const auto [lowest, highest] =
            std::minmax_element(m_Analysis.curve.signal.begin(), m_Analysis.curve.signal.end());
        return {std::min(0.0, *lowest), *highest, kMainBottom, kTop};
    }

    LinearAxis ResidualAxis() const {
        double largest = 0.0;
        for (const auto& row : m_Residuals) {
            for (const double residual : row) {
                largest = std::isfinite(residual) ? std::max(largest, std::abs(residual)) : largest;
            }
        }
        largest = largest > 0.0 ? largest : 1.0;
        return {-largest, largest, kBottom, kResidualTop};
    }

    std::string Heading() const {
        const Conditions& conditions = m_Analysis.conditions;
        const std::filesystem::path name = PathOf(ValidUtf8(m_Analysis.curve.file)).filename();
        const std::u8string utf8 = name.u8string();
        return Text(kLeft, 34, "font-size=\"20\" font-weight=\"bold\"",
                    Escape(std::string(utf8.begin(), utf8.end()))) +
               Text(kLeft, 58, "fill=\"#555555\"",
                    FormatGeneral(conditions.wavelength * 1e9, 6) + " nm, " +
                        FormatGeneral(conditions.angle, 6) + "\xC2\xB0, " +
                        FormatGeneral(conditions.temperature, 6) + " K, " +
                        FormatGeneral(conditions.viscosity * 1e3, 6) +
                        " mPa s, n = " + FormatGeneral(conditions.refractiveIndex, 6));
    }

    std::string Panel(const LinearAxis& axis, double top, double bottom) const {
        std::string text;
        for (const double value : m_Lag.MinorTicks()) {
            const double x = m_Lag.Place(value);
            text += Line(x, top, x, bottom, "stroke=\"#f3f3f3\"") +
                    Line(x, bottom, x, bottom - 4, "stroke=\"#444444\"");
        }
        for (const Tick& tick : m_Lag.Ticks()) {
            const double x = m_Lag.Place(tick.value);
            text += Line(x, top, x, bottom, "stroke=\"#dcdcdc\"") +
                    Line(x, bottom, x, bottom - 8, "stroke=\"#444444\"");
        }
        for (const Tick& tick : axis.Ticks()) {
            const double y = axis.Place(tick.value);
            const bool isZero = tick.value == 0.0;
            text += Line(kLeft, y, kRight, y,
                         isZero ? "stroke=\"#777777\" stroke-width=\"1.4\"" : "stroke=\"#dcdcdc\"") +
                    Text(kLeft - 10, y + 5, "text-anchor=\"end\"", tick.label);
        }
        return text;
    }

    std::string LagLabels() const {
        std::string text;
        for (const Tick& tick : m_Lag.Ticks()) {
            text += Text(m_Lag.Place(tick.value), kBottom + 24, "text-anchor=\"middle\"", tick.label);
        }
        const char* residualUnit = m_Analysis.curve.sigma.empty() ? "residual" : "residual / \xCF\x83";
        return text +
               Text((kLeft + kRight) / 2, kBottom + 52, "text-anchor=\"middle\" font-size=\"16\"",
                    "lag time (s)") +
               Upright((kTop + kMainBottom) / 2, "g<tspan dy=\"4\" font-size=\"11\">2</tspan><tspan "
                                                 "dy=\"-4\">\xC2\xA0\xE2\x88\x92 1</tspan>") +
               Upright((kResidualTop + kBottom) / 2, residualUnit);
    }

    std::string Frames() const {
        return Rect(kLeft, kTop, kRight, kMainBottom, "fill=\"none\" stroke=\"#444444\"") +
               Rect(kLeft, kResidualTop, kRight, kBottom, "fill=\"none\" stroke=\"#444444\"");
    }

    std::string Points() const {
        std::string text;
        for (std::size_t i = 0; i < m_Analysis.curve.lag.size(); ++i) {
            text +=
                Circle(m_Lag.Place(m_Analysis.curve.lag[i]), m_Signal.Place(m_Analysis.curve.signal[i]), 3.2,
                       IsFitted(i) ? "fill=\"none\" stroke=\"#222222\"" : "fill=\"none\" stroke=\"#aaaaaa\"");
        }
        return text;
    }

    std::string Curves() const {
        constexpr int kSteps = 400;
        const std::vector<double>& lag = m_Analysis.curve.lag;
        const double from = std::log(lag[m_Analysis.first]);
        const double to = std::log(lag[m_End - 1]);
        std::string text;
        for (std::size_t k = 0; k < m_Analysis.fits.size(); ++k) {
            const FitResult& fit = m_Analysis.fits[k];
            if (!fit.HasConverged()) {
                continue;
            }
            std::string path;
            for (int i = 0; i <= kSteps; ++i) {
                const double x = std::exp(from + (to - from) * i / kSteps);
                path += PathStep(i == 0, m_Lag.Place(x), m_Signal.Place(fit.function->Evaluate(x)));
            }
            text += "<path d=\"" + path + "\" fill=\"none\" " + Stroke(k) + "/>\n";
        }
        return text;
    }

    static std::string Stroke(std::size_t k) {
        return std::string("stroke=\"") + kLooks[k].colour + "\" stroke-width=\"" + kLooks[k].width +
               "\" stroke-dasharray=\"" + kLooks[k].dashes + "\"";
    }

    std::string ResidualPoints() const {
        std::string text;
        for (std::size_t k = 0; k < m_Residuals.size(); ++k) {
            std::string path;
            std::string points;
            const std::string fill = std::string("fill=\"") + kLooks[k].colour + "\"";
            for (std::size_t i = 0; i < m_Residuals[k].size(); ++i) {
                const double x = m_Lag.Place(m_Analysis.curve.lag[m_Analysis.first + i]);
                const double y = m_Residual.Place(m_Residuals[k][i]);
                path += PathStep(i == 0, x, y);
                points += Circle(x, y, kLooks[k].dot, fill);
            }
            if (!path.empty()) {
                text.append("<path d=\"")
                    .append(path)
                    .append("\" fill=\"none\" stroke-opacity=\"0.45\" stroke=\"");
                text.append(kLooks[k].colour).append("\"/>\n").append(points);
            }
        }
        return text;
    }

    // In the corner of the main panel, upper right or lower left, that covers fewer points.
    std::string Legend() const {
        std::size_t longest = 0; // in characters; 8 pixels hold one of any usual font
        for (const FitResult& fit : m_Analysis.fits) {
            const std::string result = fit.HasConverged() ? FormatMeasured(Nanometres(fit)) : "";
            longest = std::max(longest, fit.name.size() + result.size() + 9);
        }
        const double width = 72.0 + 8.0 * static_cast<double>(longest);
        constexpr double kRow = 22.0;
        const double height = kRow * static_cast<double>(m_Analysis.fits.size() + 1) + 14.0;
        const auto pointsInside = [&](double left, double top) {
            const Curve& curve = m_Analysis.curve;
            std::size_t inside = 0;
            for (std::size_t i = 0; i < curve.lag.size(); ++i) {
                const double x = m_Lag.Place(curve.lag[i]);
                const double y = m_Signal.Place(curve.signal[i]);
                inside += x > left && x < left + width && y > top && y < top + height ? 1U : 0U;
            }
            return inside;
        };
        const double rightPlace = kRight - 12.0 - width;
        const double lowPlace = m_Signal.Place(0.0) - 12.0 - height;
        const bool isRight = pointsInside(rightPlace, kTop + 12.0) <= pointsInside(kLeft + 12.0, lowPlace);
        const double left = isRight ? rightPlace : kLeft + 12.0;
        const double top = isRight ? kTop + 12.0 : lowPlace;

        std::string text = Rect(left, top, left + width, top + height,
                                "fill=\"#ffffff\" fill-opacity=\"0.92\" stroke=\"#cccccc\" rx=\"4\"");
        double y = top + kRow;
        text += Circle(left + 30, y - 5, 3.2, "fill=\"none\" stroke=\"#222222\"") +
                Text(left + 60, y, "",
                     "measured, " + std::to_string(m_Analysis.count) + " of " +
                         std::to_string(m_Analysis.curve.lag.size()) + " points fitted");
        for (std::size_t k = 0; k < m_Analysis.fits.size(); ++k) {
            const FitResult& fit = m_Analysis.fits[k];
            y += kRow;
            text += Line(left + 12, y - 5, left + 48, y - 5, Stroke(k)) +
                    Text(left + 60, y, "", fit.name + LegendResult(fit));
        }
        return text;
    }

    static Measured Nanometres(const FitResult& fit) {
        return {fit.radius->value * 1e9, fit.radius->error * 1e9};
    }

    static std::string LegendResult(const FitResult& fit) {
        if (!fit.HasConverged()) {
            return ": failed";
        }
        return ": R<tspan dy=\"4\" font-size=\"10\">h</tspan><tspan dx=\"5\" dy=\"-4\">= " +
               FormatMeasured(Nanometres(fit), " \xC2\xB1 ") + " nm</tspan>";
    }

    const Analysis& m_Analysis;
    std::size_t m_End;
    LogAxis m_Lag;
    std::vector<std::vector<double>> m_Residuals;
    LinearAxis m_Signal;
    LinearAxis m_Residual;
};

} // namespace

std::string DrawPlot(const Analysis& analysis) {
    return Picture(analysis).Draw();
}

} // namespace correlogram
