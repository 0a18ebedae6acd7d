// Axes of a plot: where values lie on the paper, and which of them get a mark.

#ifndef TOOLS_CORRELOGRAM_AXIS_H
#define TOOLS_CORRELOGRAM_AXIS_H

#include <string>
#include <vector>

namespace correlogram {

struct Tick {
    double value;
    std::string label; // in SVG markup
};

// A straight scale from one value to another, drawn from one place on the paper to another.
class LinearAxis {
public:
    // Takes in both values with a little room.
    LinearAxis(double lowest, double highest, double paperAtLowest, double paperAtHighest);

    double Place(double value) const;
    const std::vector<Tick>& Ticks() const { return m_Ticks; }

private:
    double m_fLowest;
    double m_fHighest;
    double m_fPaperAtLowest;
    double m_fPaperAtHighest;
    std::vector<Tick> m_Ticks;
};

// A logarithmic scale with a labelled mark a decade, or every few decades where there are many.
class LogAxis {
public:
    // Both values above zero.
    LogAxis(double lowest, double highest, double paperAtLowest, double paperAtHighest);

    double Place(double value) const;
    const std::vector<Tick>& Ticks() const { return m_Ticks; }
    const std::vector<double>& MinorTicks() const { return m_MinorTicks; } // 2 to 9 in each decade

private:
    double m_fLowest; // decimal logarithms
    double m_fHighest;
    double m_fPaperAtLowest;
    double m_fPaperAtHighest;
    std::vector<Tick> m_Ticks;
    std::vector<double> m_MinorTicks;
};

} // namespace correlogram

#endif
