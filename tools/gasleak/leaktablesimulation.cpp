#include "tools/gasleak/leaktablesimulation.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace kovtools {

namespace {

int inTenths(double value)
{
    return static_cast<int>(std::lround(value * 10.0));
}

}  // namespace

double leakRate(const LeakTableOptions& options, double powerLevel, double distance)
{
    return std::pow(10.0, 0.1 * (powerLevel + options.absorption * distance - options.levelOfOneLitre));
}

std::string simulateLeakTable(const LeakTableOptions& options)
{
    std::string table;
    for (int distance = inTenths(options.nearest); distance <= inTenths(options.farthest); ++distance) {
        for (int level = inTenths(options.lowestLevel); level <= inTenths(options.highestLevel); ++level) {
            std::array<char, 64> line{};
            std::snprintf(line.data(), line.size(), "%.1f %.1f %.6g\n", level / 10.0, distance / 10.0,
                          leakRate(options, level / 10.0, distance / 10.0));
            table += line.data();
        }
    }
    return table;
}

int pointsOfLeakTable(const LeakTableOptions& options)
{
    return (inTenths(options.farthest) - inTenths(options.nearest) + 1) *
           (inTenths(options.highestLevel) - inTenths(options.lowestLevel) + 1);
}

}  // namespace kovtools
