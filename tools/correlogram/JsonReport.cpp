#include "Report.h"

#include <cmath>

namespace correlogram {

namespace {

std::string JsonText(const std::string& text) {
    constexpr char kHex[] = "0123456789abcdef";
    std::string quoted = "\"";
    for (const char c : ValidUtf8(text)) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            quoted += {'\\', c};
        } else if (byte < 0x20U) {
            quoted += std::string("\\u00") + kHex[byte >> 4U] + kHex[byte & 0xFU];
        } else {
            quoted += c;
        }
    }
    return quoted + "\"";
}

std::string JsonNumber(double value) {
    return std::isfinite(value) ? FormatGeneral(value, 8) : "null";
}

std::string JsonValue(const std::optional<Measured>& measured) {
    return measured ? JsonNumber(measured->value) : "null";
}

std::string JsonCoefficients(const FitResult& fit) {
    std::string text;
    for (const Coefficient& coefficient : fit.coefficients) {
        text += std::string(text.empty() ? "" : ",") + "\n        {\"name\": " + JsonText(coefficient.name) +
                ", \"value\": " + JsonNumber(coefficient.fitted.value) +
                ", \"standard_error\": " + JsonNumber(coefficient.fitted.error) + "}";
    }
    return "[" + text + (text.empty() ? "]" : "\n      ]");
}

std::string JsonFit(const FitResult& fit) {
    const bool hasConverged = fit.HasConverged();
    const auto member = [](const char* name, const std::string& value) {
        return std::string(",\n      \"") + name + "\": " + value;
    };
    return "    {\n      \"name\": " + JsonText(fit.name) + member("coefficients", JsonCoefficients(fit)) +
           member("chi_squared", hasConverged ? JsonNumber(fit.chiSquared) : "null") +
           member("r_squared", hasConverged ? JsonNumber(fit.rSquared) : "null") +
           member("iterations", std::to_string(fit.iterations)) +
           member("stop_test", JsonText(fit.stopTest)) +
           member("decay_rate_per_s", JsonValue(fit.decayRate)) +
           member("polydispersity_index", JsonValue(fit.polydispersity)) +
           member("diffusion_m2_per_s", JsonValue(fit.diffusion)) +
           member("radius_m", JsonValue(fit.radius)) +
           member("radius_error_m", fit.radius ? JsonNumber(fit.radius->error) : "null") + "\n    }";
}

} // namespace

std::string JsonReport(const Analysis& analysis) {
    std::string fits;
    for (const FitResult& fit : analysis.fits) {
        fits += (fits.empty() ? "" : ",\n") + JsonFit(fit);
    }
    return "{\n  \"file\": " + JsonText(analysis.curve.file) +
           ",\n  \"points\": " + std::to_string(analysis.count) + ",\n  \"fits\": [\n" + fits + "\n  ]\n}\n";
}

} // namespace correlogram
