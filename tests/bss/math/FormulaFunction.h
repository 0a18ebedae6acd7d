// A model of the tests' own: a formula that gives the value and, where asked for, the true derivatives.

#ifndef TESTS_BSS_MATH_FORMULAFUNCTION_H
#define TESTS_BSS_MATH_FORMULAFUNCTION_H

#include "bss/math/WFunction.h"
#include "bss/math/model/WLinearFunction.h"

#include <functional>
#include <utility>
#include <vector>

class FormulaFunction : public bss::WFunction {
public:
    // d is null where only the value is wanted; otherwise it has one place per coefficient.
    using Formula = std::function<double(const std::vector<double>& b, double x, double* d)>;

    FormulaFunction(std::vector<double> start, Formula formula) : m_Formula(std::move(formula)) {
        m_Coefficients = std::move(start);
    }

    using WFunction::Evaluate;
    double Evaluate(double x) override {
        ++evaluations;
        return m_Formula(m_Coefficients, x, nullptr);
    }
    void ComputeDerivatives(double x, std::vector<double>& d) override {
        ++differentiations;
        d.assign(m_Coefficients.size(), 0.0);
        m_Formula(m_Coefficients, x, d.data());
    }
    void ResetData() override { ++resets; }
    WFunction* clone() const override { return new FormulaFunction(*this); }
    std::wstring GetCoefficientName(long index) const override {
        return WFunction::GetCoefficientName(index);
    }

    long evaluations = 0;
    long differentiations = 0;
    long resets = 0;

protected:
    void SetFunctionType() override { m_eType = etUndefined; }

private:
    Formula m_Formula;
};

// y = b0 * x: a straight line through the origin.
class LineThroughOrigin : public bss::WLinearFunction {
public:
    LineThroughOrigin() { WLinearFunction::SetNumberOfBasisFunctions(1); }

    void BasisFunctionEvaluation(double x) override { m_BasisFunctions.assign(1, x); }
    WFunction* clone() const override { return new LineThroughOrigin(*this); }

protected:
    void SetFunctionType() override { m_eType = etUndefined; }
};

#endif
