#include "tools/calibration/picturemapping.h"

#include <KOVDoaHandle/diagnostics/kovcalibration.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <opencv2/core.hpp>

#include "tools/support/errors.h"

namespace kovtools {

using nlohmann::ordered_json;

namespace {

// Root mean square distance of the source points from the line that fits them best, pixels. They are whole pixels, so
// less than that may be nothing but their rounding, and the mapping across the line would be made of it.
constexpr double leastSpread = 1.0;

double spreadAcrossLine(const PointPairs& pairs)
{
    cv::Mat1d points(calibrationPairs, 2);
    for (int i = 0; i < calibrationPairs; ++i) {
        points(i, 0) = pairs[static_cast<std::size_t>(i)].source.x;
        points(i, 1) = pairs[static_cast<std::size_t>(i)].source.y;
    }
    cv::Mat1d covariance;
    cv::Mat1d mean;
    cv::calcCovarMatrix(points, covariance, mean, cv::COVAR_NORMAL | cv::COVAR_ROWS | cv::COVAR_SCALE,
                        CV_64F);
    cv::Mat1d eigenvalues;
    cv::eigen(covariance, eigenvalues);
    return std::sqrt(std::max(eigenvalues(1), 0.0));
}

std::int64_t cross(PixelPoint origin, PixelPoint first, PixelPoint second)
{
    const auto difference = [](unsigned a, unsigned b) { return std::int64_t{a} - std::int64_t{b}; };
    return difference(first.x, origin.x) * difference(second.y, origin.y) -
           difference(first.y, origin.y) * difference(second.x, origin.x);
}

bool isSamePlace(PixelPoint first, PixelPoint second)
{
    return first.x == second.x && first.y == second.y;
}

// In whole numbers, so that no rounding hides it.
void checkSpread(const PointPairs& pairs)
{
    const PixelPoint origin = pairs[0].source;
    const auto other = std::find_if(pairs.begin(), pairs.end(), [origin](const PointPair& pair) {
        return !isSamePlace(pair.source, origin);
    });
    if (other == pairs.end()) {
        throw DataError("all source points are the same one; a mapping needs three that are not on one line");
    }
    const bool isLine = std::all_of(pairs.begin(), pairs.end(), [&](const PointPair& pair) {
        return cross(origin, other->source, pair.source) == 0;
    });
    if (isLine) {
        throw DataError(
            "all source points lie on one line; a mapping needs three that do not, better ones all over the "
            "picture");
    }
    if (spreadAcrossLine(pairs) < leastSpread) {
        throw DataError(
            "the source points lie too nearly on one line for a mapping; choose some all over the picture");
    }
}

cv::Point2d mapPoint(const MappingRows& rows, PixelPoint point)
{
    return {rows[0][0] + rows[1][0] * point.y + rows[2][0] * point.x,
            rows[0][1] + rows[1][1] * point.y + rows[2][1] * point.x};
}

MappingRows fitByLibrary(const PointPairs& pairs)
{
    unsigned source[calibrationPairs][2];
    unsigned target[calibrationPairs][2];
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        source[i][0] = pairs[i].source.x;
        source[i][1] = pairs[i].source.y;
        target[i][0] = pairs[i].target.x;
        target[i][1] = pairs[i].target.y;
    }
    double out[3][2];
    KOVCalibration::GenConvMat(source, target, out);
    MappingRows rows{};
    for (std::size_t row = 0; row < rows.size(); ++row) {
        std::copy_n(out[row], 2, rows[row].begin());
    }
    return rows;
}

std::string formatted(const char* format, double first, double second, double third)
{
    char text[96];
    std::snprintf(text, sizeof text, format, first, second, third);
    return text;
}

ordered_json pointJson(cv::Point2d point)
{
    return {{"x", point.x}, {"y", point.y}};
}

ordered_json pointJson(PixelPoint point)
{
    return {{"x", point.x}, {"y", point.y}};
}

}  // namespace

PictureMapping fitMapping(const PointPairs& pairs)
{
    checkSpread(pairs);
    PictureMapping mapping;
    mapping.rows = fitByLibrary(pairs);
    double squares = 0.0;
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const PixelPoint target = pairs[i].target;
        mapping.mapped[i] = mapPoint(mapping.rows, pairs[i].source);
        mapping.residuals[i] = mapping.mapped[i] - cv::Point2d(target.x, target.y);
        squares += mapping.residuals[i].dot(mapping.residuals[i]);
        if (cv::norm(mapping.residuals[i]) >
            cv::norm(mapping.residuals[static_cast<std::size_t>(mapping.worst)])) {
            mapping.worst = static_cast<int>(i);
        }
    }
    mapping.rms = std::sqrt(squares / calibrationPairs);
    return mapping;
}

std::string mappingText(const PictureMapping& mapping, const PointPairs& pairs)
{
    const MappingRows& rows = mapping.rows;
    std::string text = formatted("x' = %.6f %+.9f y %+.9f x\n", rows[0][0], rows[1][0], rows[2][0]) +
                       formatted("y' = %.6f %+.9f y %+.9f x\n", rows[0][1], rows[1][1], rows[2][1]) +
                       "line   source        target        error x  error y  error (pixels)\n";
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        char line[128];
        std::snprintf(line, sizeof line, "%4d   %5u,%-6u  %5u,%-6u  %+7.2f  %+7.2f  %6.2f\n", pairs[i].line,
                      pairs[i].source.x, pairs[i].source.y, pairs[i].target.x, pairs[i].target.y,
                      mapping.residuals[i].x, mapping.residuals[i].y, cv::norm(mapping.residuals[i]));
        text += line;
    }
    char last[96];
    const auto worst = static_cast<std::size_t>(mapping.worst);
    std::snprintf(last, sizeof last, "root mean square %.3f pixels, worst %.3f in line %d\n", mapping.rms,
                  cv::norm(mapping.residuals[worst]), pairs[worst].line);
    return text + last;
}

ordered_json mappingJson(const PictureMapping& mapping, const PointPairs& pairs)
{
    ordered_json json{{"mapping", mapping.rows}, {"pairs", ordered_json::array()}};
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        json["pairs"].push_back({{"line", pairs[i].line},
                                 {"source", pointJson(pairs[i].source)},
                                 {"target", pointJson(pairs[i].target)},
                                 {"mapped", pointJson(mapping.mapped[i])},
                                 {"residual", pointJson(mapping.residuals[i])},
                                 {"error", cv::norm(mapping.residuals[i])}});
    }
    json["rms_px"] = mapping.rms;
    json["worst_line"] = pairs[static_cast<std::size_t>(mapping.worst)].line;
    return json;
}

}  // namespace kovtools
