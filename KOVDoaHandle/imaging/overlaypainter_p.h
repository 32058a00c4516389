// Paints a map into a picture: doubles it, enlarges it to the picture's size and colours it, one row at a
// time, so that no level of picture size is ever stored.
#ifndef KOVDOA_OVERLAYPAINTER_P_H
#define KOVDOA_OVERLAYPAINTER_P_H

#include <cstdint>
#include <memory>
#include <vector>

#include <KOVDoaHandle/foundation/engine/containers.h>
#include <KOVDoaHandle/imaging/bilinear_p.h>
#include <KOVDoaHandle/imaging/palettes_p.h>
#include <KOVDoaHandle/imaging/pixelkernels_p.h>
#include <KOVDoaHandle/imaging/region_p.h>

namespace KOVPrivate {

struct MapDeleter
{
    void operator()(mat2d_fp32* map) const { destroy_mat2d_fp32(map); }
};
using OwnedMap = std::unique_ptr<mat2d_fp32, MapDeleter>;

// The levels between which a palette is stretched.
struct LevelRange
{
    float low;
    float high;
};

// Pictures are height rows of width blue, green, red pixels without gaps; each call writes every byte of one.
class OverlayPainter
{
public:
    void setPictureSize(int width, int height);
    void setPalette(const Palette& palette);

    // Takes the map to paint; it is read during this call only.
    void setMap(mat2d_fp32& map);

    // Colours the whole picture.
    void paint(LevelRange range, std::uint8_t* picture);

    // Colours the pixels inside the region; the others are black.
    void paintInside(LevelRange range, const Region& region, std::uint8_t* picture);

    // Colours the whole picture with `outside`, and inside the region adds the colours of `inside`, saturating:
    // both colourings meet there on purpose.
    void paintInsideAndOutside(LevelRange inside, LevelRange outside, const Region& region,
                               std::uint8_t* picture);

private:
    BilinearRows enlargedRows();
    void colourRun(const RowBlend& blend, const IndexRule& rule, PixelRun run, std::uint8_t* pixels);
    std::uint8_t* rowOf(std::uint8_t* picture, int y) const;

    int m_width = 0;
    int m_height = 0;
    const Palette* m_palette = nullptr;
    std::vector<std::uint32_t> m_table;

    OwnedMap m_doubled;          // the map at twice its rows and columns
    BilinearAxis m_doubledRows;  // from the map to twice its size
    BilinearAxis m_doubledCols;
    BilinearAxis m_pictureRows;  // and on to the picture
    BilinearAxis m_pictureCols;
    std::vector<float> m_scratch;
    std::vector<std::int32_t> m_indices;    // one row
    std::vector<std::uint8_t> m_rowPixels;  // one row
};

}  // namespace KOVPrivate

#endif
