#include "krtpal/posix/text/numbertext.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace krtpal::posix {

namespace {

// The value d1.d2d3... x 10^exponent, with all digits of the exact binary value.
struct Decimal {
    std::string digits;
    int exponent;
};

Decimal ExactDecimal(double magnitude) {
    // The largest subnormal number has the longest expansion, 767 significant digits.
    constexpr int kMostDigits = 767;
    char buffer[kMostDigits + 16];
    const auto end = std::to_chars(std::begin(buffer), std::end(buffer), magnitude,
                                   std::chars_format::scientific, kMostDigits - 1)
                         .ptr;
    const std::string_view text(buffer, static_cast<std::size_t>(end - buffer));
    const std::size_t mark = text.find('e');
    int exponent = 0;
    const std::size_t sign = text[mark + 1] == '+' ? 2 : 1;
    std::from_chars(text.data() + mark + sign, text.data() + text.size(), exponent);
    std::string digits(1, text[0]);
    digits += text.substr(2, mark - 2);
    return {digits, exponent};
}

void RoundHalfAwayFromZero(Decimal* number, std::size_t count) {
    const bool up = number->digits[count] >= '5';
    number->digits.resize(count);
    if (!up) {
        return;
    }
    std::size_t at = count;
    while (at != 0 && number->digits[at - 1] == '9') {
        number->digits[--at] = '0';
    }
    if (at != 0) {
        ++number->digits[at - 1];
    } else {
        number->digits.insert(0, 1, '1');
        number->digits.resize(count);
        ++number->exponent;
    }
}

std::wstring Widened(const std::string& ascii) {
    return {ascii.begin(), ascii.end()};
}

constexpr bool IsBlank(wchar_t c) {
    return c == L' ' || (c >= L'\t' && c <= L'\r');
}
constexpr bool IsDigit(wchar_t c) {
    return c >= L'0' && c <= L'9';
}

std::wstring_view Trimmed(std::wstring_view text) {
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

bool Take(std::wstring_view* text, wchar_t c) {
    const bool found = !text->empty() && text->front() == c;
    if (found) {
        text->remove_prefix(1);
    }
    return found;
}

std::string TakeDigits(std::wstring_view* text, bool withGroups) {
    std::string digits;
    while (!text->empty() &&
           (IsDigit(text->front()) || (withGroups && !digits.empty() && text->front() == L','))) {
        if (IsDigit(text->front())) {
            digits += static_cast<char>(text->front());
        }
        text->remove_prefix(1);
    }
    return digits;
}

void DropLeadingZeros(std::string* digits) {
    digits->erase(0, digits->find_first_not_of('0'));
}

// Returns false for an E without an exponent.
bool TakeExponent(std::wstring_view* text, int* exponent) {
    if (!Take(text, L'e') && !Take(text, L'E')) {
        return true;
    }
    const bool negative = Take(text, L'-');
    if (!negative) {
        Take(text, L'+');
    }
    std::string digits = TakeDigits(text, false);
    if (digits.empty()) {
        return false;
    }
    DropLeadingZeros(&digits);
    constexpr std::size_t kMostDigits = 5;
    constexpr int kFarOut = 100'000;
    const int value = digits.empty() ? 0 : digits.size() > kMostDigits ? kFarOut : std::stoi(digits);
    *exponent = negative ? -value : value;
    return true;
}

std::optional<NumberText> ParseRadix(std::wstring_view text) {
    const unsigned base = text.size() > 1 && (text[1] | 0x20) == L'h'   ? 16
                          : text.size() > 1 && (text[1] | 0x20) == L'o' ? 8
                                                                        : 0;
    if (base == 0 || text.size() < 3) {
        return std::nullopt;
    }
    unsigned long long value = 0;
    for (const wchar_t c : text.substr(2)) {
        const wchar_t lower = IsDigit(c) ? c : static_cast<wchar_t>(c | 0x20);
        const bool isLetter = lower >= L'a' && lower <= L'f';
        const unsigned digit =
            IsDigit(c) ? static_cast<unsigned>(c - L'0') : static_cast<unsigned>(lower - L'a') + 10;
        if ((!IsDigit(c) && !isLetter) || digit >= base ||
            value > std::numeric_limits<unsigned long long>::max() / base) {
            return std::nullopt;
        }
        value = value * base + digit;
    }
    NumberText number;
    number.integer = value == 0 ? "" : std::to_string(value);
    return number;
}

} // namespace

std::wstring TextFromDouble(double value, int digits) {
    const bool negative = std::signbit(value);
    if (std::isnan(value)) {
        return negative ? L"-NAN(IND)" : L"NAN";
    }
    if (std::isinf(value)) {
        return negative ? L"-INF" : L"INF";
    }
    if (value == 0.0) {
        return L"0";
    }
    Decimal number = ExactDecimal(std::fabs(value));
    RoundHalfAwayFromZero(&number, static_cast<std::size_t>(digits));
    number.digits.erase(number.digits.find_last_not_of('0') + 1);

    std::string text = negative ? "-" : "";
    const int exponent = number.exponent;
    const auto count = static_cast<int>(number.digits.size());
    if (exponent < -4 || exponent >= digits) {
        text += number.digits[0];
        text += count > 1 ? "." : "";
        text.append(number.digits, 1);
        const std::string size = std::to_string(std::abs(exponent));
        text += exponent < 0 ? "E-" : "E+";
        text += size.size() < 2 ? "0" : "";
        text += size;
    } else if (exponent < 0) {
        text += "0.";
        text.append(static_cast<std::size_t>(-exponent) - 1, '0');
        text += number.digits;
    } else if (count <= exponent + 1) {
        text += number.digits;
        text.append(static_cast<std::size_t>(exponent) + 1 - number.digits.size(), '0');
    } else {
        const auto point = static_cast<std::size_t>(exponent) + 1;
        text.append(number.digits, 0, point);
        text += '.';
        text.append(number.digits, point);
    }
    return Widened(text);
}

std::optional<NumberText> ParseNumber(std::wstring_view text) {
    text = Trimmed(text);
    if (!text.empty() && text.front() == L'&') {
        return ParseRadix(text);
    }
    NumberText number;
    number.negative = Take(&text, L'-');
    const bool hasSign = number.negative || Take(&text, L'+');
    text = Trimmed(text);
    number.integer = TakeDigits(&text, true);
    bool hasDigits = !number.integer.empty();
    if (Take(&text, L'.')) {
        number.fraction = TakeDigits(&text, false);
        hasDigits = hasDigits || !number.fraction.empty();
    }
    if (!hasDigits || !TakeExponent(&text, &number.exponent)) {
        return std::nullopt;
    }
    text = Trimmed(text);
    if (!hasSign && Take(&text, L'-')) {
        number.negative = true;
    }
    DropLeadingZeros(&number.integer);
    number.fraction.erase(number.fraction.find_last_not_of('0') + 1);
    return text.empty() ? std::optional(number) : std::nullopt;
}

double DoubleFromNumber(const NumberText& number) {
    const std::string text = (number.negative ? "-0" : "0") + number.integer + "." + number.fraction + "0e" +
                             std::to_string(number.exponent);
    double value = 0.0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        // The position of the first digit distinguishes overflow from underflow.
        const std::size_t zeros = number.fraction.find_first_not_of('0');
        const long long scale = number.integer.empty() ? -static_cast<long long>(zeros)
                                                       : static_cast<long long>(number.integer.size());
        const bool large = scale + number.exponent > 0;
        value = large ? std::numeric_limits<double>::infinity() : 0.0;
        value = number.negative ? -value : value;
    }
    return value;
}

} // namespace krtpal::posix
