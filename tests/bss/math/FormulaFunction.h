// A model of the tests' own: a formula that returns the value and writes the derivatives.

#ifndef TESTS_BSS_MATH_FORMULAFUNCTION_H
#define TESTS_BSS_MATH_FORMULAFUNCTION_H

#include "bss/math/WFunction.h"

#include <functional>
#include <utility>
#include <vector>

class FormulaFunction : public bss::WFunction {
public:
    // d has one place per coefficient, and 0.0 in it.
    using Formula = std::function<double(const std::vector<double>& b, double x, double* d)>;

    FormulaFunction(std::vector<double> start, Formula formula) : m_Formula(std::move(formula)) {
        m_Coefficients = std::move(start);
    }
    explicit FormulaFunction(std::function<double(double)> f)
        : FormulaFunction({}, [f](const std::vector<double>&, double x, double*) { return f(x); }) {}

    using WFunction::Evaluate;
    double Evaluate(double x) override {
        ++evaluations;
        std::vector<double> unused(m_Coefficients.size());
        return m_Formula(m_Coefficients, x, unused.data());
    }
    void ComputeDerivatives(double x, std::vector<double>& d) override {
        ++differentiations;
        d.assign(m_Coefficients.size(), 0.0);
        m_Formula(m_Coefficients, x, d.data());
    }
    void ResetData() override { ++resets; }
    WFunction* clone() const override { return new FormulaFunction(*this); }
    std::wstring GetCoefficientName(long) const override { return {}; }

    long evaluations = 0;
    long differentiations = 0;
    long resets = 0;

private:
    void SetFunctionType() override {}

    Formula m_Formula;
};

#endif
