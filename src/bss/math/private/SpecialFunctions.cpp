#include "bss/math/private/SpecialFunctions.h"

#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <boost/math/special_functions/round.hpp>

#include <cmath>
#include <limits>

namespace bss::detail {

double Erfc(double x) {
    // Boost's result for NaN depends on its version; a fit must get NaN and reject the step.
    if (std::isnan(x)) {
        return x;
    }
    const double result = boost::math::erfc(x);
    if (!(std::fabs(result) <= std::numeric_limits<double>::max())) {
        return boost::math::policies::raise_overflow_error<double>(
            "boost::math::erfc<%1%>(%1%, %1%)", "numeric overflow", boost::math::policies::policy<>());
    }
    return result;
}

double LogGamma(double x) {
    return boost::math::lgamma(x);
}

double Round(double x) {
    return boost::math::round(x);
}

} // namespace bss::detail
