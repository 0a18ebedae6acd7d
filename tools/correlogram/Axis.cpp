#include "Axis.h"

#include "TextFormat.h"

#include <algorithm>
#include <cmath>

namespace correlogram {

namespace {

constexpr char kMinus[] = "\xE2\x88\x92"; // U+2212, as wide as a plus

std::string WithMinus(const std::string& number) {
    return number.starts_with("-") ? kMinus + number.substr(1) : number;
}

// 1, 2 or 5 times a power of ten, so that about six marks lie in the span.
double StepFor(double span) {
    const double rough = span / 6.0;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    const double ratio = rough / power;
    return (ratio > 5.0 ? 10.0 : ratio > 2.0 ? 5.0 : ratio > 1.0 ? 2.0 : 1.0) * power;
}

} // namespace

LinearAxis::LinearAxis(double lowest, double highest, double paperAtLowest, double paperAtHighest)
    : m_fPaperAtLowest(paperAtLowest), m_fPaperAtHighest(paperAtHighest) {
    const double span =
        std::max(highest - lowest, 1e-12 * std::max({1e-3, std::abs(lowest), std::abs(highest)}));
    m_fLowest = lowest - 0.05 * span;
    m_fHighest = highest + 0.05 * span;
    const double step = StepFor(span);
    const double first = std::ceil(m_fLowest / step);
    const double last = std::floor(m_fHighest / step);
    const int decimals = std::clamp(static_cast<int>(-std::floor(std::log10(step) + 1e-9)), 0, 12);
    for (int k = 0; k <= static_cast<int>(last - first); ++k) {
        const double value = (first + k) * step;
        const std::string label =
            std::abs(value) < 1e5 ? FormatFixed(value, decimals) : FormatGeneral(value, 4);
        m_Ticks.push_back({value, WithMinus(value == 0.0 ? FormatFixed(0.0, decimals) : label)});
    }
}

double LinearAxis::Place(double value) const {
    return m_fPaperAtLowest +
           (value - m_fLowest) / (m_fHighest - m_fLowest) * (m_fPaperAtHighest - m_fPaperAtLowest);
}

LogAxis::LogAxis(double lowest, double highest, double paperAtLowest, double paperAtHighest)
    : m_fPaperAtLowest(paperAtLowest), m_fPaperAtHighest(paperAtHighest) {
    const double margin = 0.02 * std::max(0.1, std::log10(highest / lowest));
    m_fLowest = std::log10(lowest) - margin;
    m_fHighest = std::log10(highest) + margin;
    const int first = static_cast<int>(std::floor(m_fLowest));
    const int last = static_cast<int>(std::ceil(m_fHighest));
    const int every = (last - first) / 12 + 1;
    for (int decade = first; decade <= last; ++decade) {
        if (decade >= m_fLowest && decade <= m_fHighest && decade % every == 0) {
            m_Ticks.push_back({std::pow(10.0, decade), "10<tspan dy=\"-6\" font-size=\"10\">" +
                                                           WithMinus(std::to_string(decade)) + "</tspan>"});
        }
        for (int digit = 2; digit <= 9 && every == 1; ++digit) {
            const double place = decade + std::log10(digit);
            if (place > m_fLowest && place < m_fHighest) {
                m_MinorTicks.push_back(std::pow(10.0, place));
            }
        }
    }
}

double LogAxis::Place(double value) const {
    return m_fPaperAtLowest + (std::log10(value) - m_fLowest) / (m_fHighest - m_fLowest) *
                                  (m_fPaperAtHighest - m_fPaperAtLowest);
}

} // namespace correlogram
