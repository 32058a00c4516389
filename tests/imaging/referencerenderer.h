// The imager once more, as plainly as it can be written: every step a loop over stored maps and pictures,
// nothing shared with the library but the palettes' tables. The library's imager is held to it bit by bit.
#ifndef KOVDOA_TESTS_REFERENCERENDERER_H
#define KOVDOA_TESTS_REFERENCERENDERER_H

#include <opencv2/core.hpp>

#include <cstdint>
#include <vector>

#include <KOVDoaHandle/foundation/engine/containers.h>
#include <KOVDoaHandle/imaging/engmapresult.h>

namespace reference {

// A map in one row-major buffer.
struct Grid
{
    Grid(int gridRows, int gridCols) : rows(gridRows), cols(gridCols), values(count(gridRows, gridCols)) {}
    explicit Grid(const mat2d_fp32& map);

    static std::size_t count(int r, int c)
    {
        return static_cast<std::size_t>(r) * static_cast<std::size_t>(c);
    }
    float& at(int row, int col) { return values[count(row, cols) + static_cast<std::size_t>(col)]; }
    float at(int row, int col) const { return values[count(row, cols) + static_cast<std::size_t>(col)]; }

    int rows;
    int cols;
    std::vector<float> values;
};

struct Extremes
{
    fpoint2d max;
    fpoint2d min;
};

Extremes findMaxMin(const Grid& map);
Extremes findMaxMinWithRadius(const Grid& map, int radius);
Extremes findMaxMinWithOutRadius(const Grid& map, int radius);
Extremes findMaxMinWithEllipse(const Grid& map, float a, float b);
Extremes findMaxMinWithOutEllipse(const Grid& map, float a, float b);
std::vector<fpoint2d> findPeaks(const Grid& map, float threshold);
float median(const Grid& map);
Grid regression(const std::vector<fpoint2d>& points, int rows, int cols, float sigma, float noise);
Grid interpolate(const Grid& map, int rows, int cols);
// Pixels of 3 bytes; palette 1 black-red-yellow-white, 2 grey, any other rainbow.
std::vector<std::uint8_t> colour(const Grid& map, float min, float max, int palette);

// The settings of an imager, and a render.
class Imager
{
public:
    void init(int scaleA, int scaleB, int pictureWidth, int pictureHeight);
    void setRadius(float newRadius, int p, int q);

    // Returns the picture and updates the frame.
    std::vector<std::uint8_t> render(EngMapResult& frame) const;

    float dynamic = 3.0F;
    float minPreSdLever = 1e-8F;
    int cursorNum = 1;
    bool multCursorEnable = false;
    bool outsideShown = false;
    int palette = 0;
    float imageScale = 1.0F;

private:
    std::vector<std::uint8_t> colourPicture(const Grid& map, float highest, float offset) const;

    int m_width = 640;
    int m_height = 480;
    int m_scaleA = 640;
    int m_scaleB = 480;
    float m_radius = -1.0F;
    float m_semiAxisA = 0.0F;
    float m_semiAxisB = 0.0F;
    cv::Mat m_insideMask;
    cv::Mat m_outsideMask;
};

}  // namespace reference

#endif
