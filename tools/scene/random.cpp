#include "tools/scene/random.h"

#include <cmath>
#include <numbers>

namespace kovtools {

std::complex<double> Random::complexNormal()
{
    const double radius = std::sqrt(-std::log(1.0 - uniform()));  // the logarithm's argument is never 0
    const double angle = 2.0 * std::numbers::pi * uniform();
    return {radius * std::cos(angle), radius * std::sin(angle)};
}

}  // namespace kovtools
