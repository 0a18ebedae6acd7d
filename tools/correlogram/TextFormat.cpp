#include "TextFormat.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace correlogram {

namespace {

std::string Chars(double value, std::chars_format format, int precision) {
    char text[512];
    const auto end = std::to_chars(text, text + sizeof text, value, format, precision);
    return {text, end.ptr};
}

// The decimal exponent of the value once it is rounded to that many significant digits; 0 for zero.
int DecimalExponent(double value, int digits) {
    if (value == 0.0) {
        return 0;
    }
    const std::string text = Chars(std::abs(value), std::chars_format::scientific, digits - 1);
    const std::size_t start = text.find('e') + (text[text.find('e') + 1] == '+' ? 2U : 1U);
    int exponent = 0;
    std::from_chars(text.data() + start, text.data() + text.size(), exponent);
    return exponent;
}

// Length of the UTF-8 character that begins there, 0 if none does.
std::size_t CharacterLength(const std::string& text, std::size_t start) {
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const unsigned lead = byte(start);
    const std::size_t length = lead < 0x80U                     ? 1U
                               : lead >= 0xC2U && lead <= 0xDFU ? 2U
                               : (lead & 0xF0U) == 0xE0U        ? 3U
                               : lead >= 0xF0U && lead <= 0xF4U ? 4U
                                                                : 0U;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(start + i) & 0xC0U) != 0x80U) {
            return 0;
        }
    }
    const unsigned second = byte(start + 1);
    const bool isOverlong = (lead == 0xE0U && second < 0xA0U) || (lead == 0xF0U && second < 0x90U);
    const bool isNoCharacter = (lead == 0xEDU && second >= 0xA0U) || (lead == 0xF4U && second >= 0x90U);
    return isOverlong || isNoCharacter ? 0 : length;
}

} // namespace

std::optional<double> ParseNumber(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string::npos) {
        return std::nullopt;
    }
    const char* begin = text.data() + first;
    const char* end = text.data() + text.find_last_not_of(" \t") + 1;
    if (*begin == '+' && end - begin > 1 && begin[1] != '-') {
        ++begin;
    }
    double value = 0.0;
    const auto result = std::from_chars(begin, end, value);
    if (result.ptr != end || result.ec == std::errc::invalid_argument) {
        return std::nullopt;
    }
    if (result.ec == std::errc::result_out_of_range) {
        return std::numeric_limits<double>::infinity();
    }
    return value;
}

std::string FormatGeneral(double value, int digits) {
    return Chars(value, std::chars_format::general, digits);
}

std::string FormatFixed(double value, int decimals) {
    return Chars(value, std::chars_format::fixed, decimals);
}

std::string FormatMeasured(const std::optional<Measured>& measured) {
    return FormatMeasured(measured, " +/- ");
}

std::string FormatMeasured(const std::optional<Measured>& measured, const std::string& plusMinus) {
    if (!measured || !std::isfinite(measured->value)) {
        return "-";
    }
    const auto [value, error] = *measured;
    if (!std::isfinite(error) || error <= 0.0) {
        return FormatGeneral(value, 5);
    }
    const int errorExponent = DecimalExponent(error, 2);
    const int exponent = std::max(DecimalExponent(value, 5), errorExponent);
    if (exponent < -3 || exponent >= 5 || errorExponent >= 2) {
        const double scale = std::pow(10.0, exponent);
        const int decimals = std::clamp(exponent - errorExponent + 1, 1, 12);
        return "(" + FormatFixed(value / scale, decimals) + plusMinus + FormatFixed(error / scale, decimals) +
               ")e" + (exponent < 0 ? "-" : "+") + (std::abs(exponent) < 10 ? "0" : "") +
               std::to_string(std::abs(exponent));
    }
    const int decimals = std::clamp(1 - errorExponent, 0, 12);
    return FormatFixed(value, decimals) + plusMinus + FormatFixed(error, decimals);
}

std::string ValidUtf8(const std::string& text) {
    std::string valid;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = CharacterLength(text, i);
        valid += length != 0 ? text.substr(i, length) : "\xEF\xBF\xBD";
        i += std::max<std::size_t>(length, 1);
    }
    return valid;
}

} // namespace correlogram
