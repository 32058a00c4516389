// The imager: settings, the region of interest, and the steps from a frame to its overlay.
#include <KOVDoaHandle/imaging/kovdoaobject.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <mutex>
#include <vector>

#include <KOVDoaHandle/diagnostics/kovblas.h>
#include <KOVDoaHandle/foundation/kovlog_p.h>
#include <KOVDoaHandle/foundation/kovmessage.h>
#include <KOVDoaHandle/imaging/engmapresult.h>
#include <KOVDoaHandle/imaging/kovgaussianprocessregression.h>
#include <KOVDoaHandle/imaging/kovmapsearch.h>
#include <KOVDoaHandle/imaging/overlaypainter_p.h>
#include <KOVDoaHandle/imaging/palettes_p.h>
#include <KOVDoaHandle/imaging/region_p.h>

using KOVPrivate::LevelRange;
using KOVPrivate::OwnedMap;

namespace {

// Of the bumps that several cursors are drawn as: the length scale in map cells, and a floor of -90 dB
// relative to the cursor's level that keeps the rest of the map above zero.
constexpr float cursorLengthScale = 2.4F;
constexpr float cursorNoise = 3.1622778e-5F;

constexpr float noRegion = -1.0F;

// How far the region shrinks with the zoom. The factor steps back to 1 at 2 and at 4 on purpose.
float regionZoom(float imageScale)
{
    if (imageScale >= 4.0F) {
        return (imageScale - 4.0F) * 0.25F + 1.0F;
    }
    if (imageScale >= 2.0F) {
        return (imageScale - 2.0F) * 0.5F + 1.0F;
    }
    return imageScale;
}

// Cuts the fraction off. What no int can hold gives the smallest one, which the drawing then refuses.
int truncated(double value)
{
    const bool representable = value > -2147483649.0 && value < 2147483648.0;
    return representable ? static_cast<int>(value) : std::numeric_limits<int>::min();
}

// Level of one value above another, dB. Not finite where the extreme is not positive.
float levelAbove(float value, float reference)
{
    return 20.0F * std::log10(value) - 20.0F * std::log10(reference);
}

// The factor of an amplitude for a level difference in dB; the exponent is single precision, the power
// double.
double amplitudeFactor(float halfDecibels)
{
    return std::pow(10.0, static_cast<double>(halfDecibels));
}

// The range from `dynamic` dB below `highest` up to it; or, when the minimum level, raised by `offset` dB,
// lies higher, the range of the same width upwards from there.
LevelRange colourRange(float highest, float dynamic, float minimumLevel, float offset)
{
    LevelRange range{static_cast<float>(highest * amplitudeFactor(-0.05F * dynamic)), highest};
    const auto raisedMinimum = static_cast<float>(minimumLevel * amplitudeFactor(0.05F * offset));
    if (raisedMinimum > range.high || raisedMinimum > range.low) {
        range.low = raisedMinimum;
        range.high = static_cast<float>(raisedMinimum * amplitudeFactor(0.05F * dynamic));
    }
    return range;
}

void copyMap(const mat2d_fp32& source, mat2d_fp32& destination)
{
    for (int row = 0; row < source.rows; ++row) {
        std::copy_n(source.data[row], source.cols, destination.data[row]);
    }
}

std::size_t byteCount(const mat1d_uint8& image)
{
    return static_cast<std::size_t>(std::max(image.rows, 0)) *
           static_cast<std::size_t>(std::max(image.cols, 0));
}

}  // namespace

class KOVOFFLineDoaObject::Private
{
public:
    // The peaks of a frame in stored order, and those of them that become cursors.
    struct Points
    {
        std::vector<fpoint2d> peaks;
        std::vector<fpoint2d> cursors;
    };

    bool hasRegion() const { return radius > 0.0F; }
    std::size_t pictureBytes() const
    {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3;
    }

    int init(int scaleA, int scaleB, int pictureWidth, int pictureHeight);
    void setRadius(float newRadius, int p, int q);

    void render(EngMapResult& result, mat1d_uint8& image);

    int width = 640;  // of the camera picture and of the overlay
    int height = 480;
    int mapScaleA = 640;  // the second size pair: see init() in the header
    int mapScaleB = 480;
    float semiAxisA = 0.0F;  // of the region, in map cells, along the rows' index
    float semiAxisB = 0.0F;  // and along the columns' index
    int radiusSizeP = 640;
    int radiusSizeQ = 480;
    bool forceRadius = false;  // the next setRadius() recomputes even an unchanged radius
    float radius = noRegion;
    float dynamic = 3.0F;
    float minPreSdLever = 1e-8F;
    int cursorNum = 1;
    bool multCursorEnable = false;
    bool outsideShown = false;
    float imageScale = 1.0F;
    DOA_PALLET_ID palletId = DOA_PALLET_BGR;
    std::mutex renderMutex;

private:
    int cursorCount(const EngMapResult& result) const;
    Points choosePoints(EngMapResult& result) const;
    void copyToWorkingMap(const mat2d_fp32& map);
    bool regress(const std::vector<fpoint2d>& cursors);
    void findExtremes(EngMapResult& result);
    void removeMedian(EngMapResult& result);
    void paint(const EngMapResult& result, const Points& points, bool regressed, std::uint8_t* picture);
    const KOVPrivate::Palette& palette() const;

    KOVPrivate::Region region{height};
    KOVPrivate::OverlayPainter painter;
    OwnedMap workingMap;  // the frame's map after copy, regression and median removal
    std::vector<std::uint8_t> scratchPicture;
};

int KOVOFFLineDoaObject::Private::init(int scaleA, int scaleB, int pictureWidth, int pictureHeight)
{
    const auto replaceIfPositive = [](int& stored, int value) {
        if (value >= 1) {
            stored = value;
        }
    };
    replaceIfPositive(width, pictureWidth);
    replaceIfPositive(height, pictureHeight);
    replaceIfPositive(mapScaleA, scaleA);
    replaceIfPositive(mapScaleB, scaleB);
    region = KOVPrivate::Region(height);
    initMessage();
    return 1;
}

void KOVOFFLineDoaObject::Private::setRadius(float newRadius, int p, int q)
{
    if (newRadius == radius && !forceRadius) {
        return;
    }
    forceRadius = false;
    if (newRadius <= 0.0F) {
        radius = noRegion;
        return;
    }
    radius = newRadius;
    radiusSizeP = p;
    radiusSizeQ = q;

    const float zoom = regionZoom(imageScale);
    const auto pictureWidth = static_cast<float>(width);
    const auto pictureHeight = static_cast<float>(height);
    const float halfWidth = (pictureWidth * radius) / (static_cast<float>(p) * zoom);
    const float halfHeight = (radius * pictureHeight) / (zoom * static_cast<float>(q));
    semiAxisA = (static_cast<float>(mapScaleA) * halfWidth) / pictureWidth;
    semiAxisB = (halfHeight * static_cast<float>(mapScaleB)) / pictureHeight;

    // Emptied first, so that a region too small to draw leaves nothing behind of the former one.
    region = KOVPrivate::Region(height);
    region =
        KOVPrivate::Region::ellipse(width, height, truncated(halfWidth - 2.0), truncated(halfHeight - 2.0));
}

// How many of the first peaks may become cursors.
int KOVOFFLineDoaObject::Private::cursorCount(const EngMapResult& result) const
{
    int count = cursorNum;
    if (count < 1) {
        return count;
    }
    if (multCursorEnable && result.firstPointInRadius && count < std::numeric_limits<int>::max()) {
        ++count;
    }
    return hasRegion() && !outsideShown ? 1 : count;
}

KOVOFFLineDoaObject::Private::Points KOVOFFLineDoaObject::Private::choosePoints(EngMapResult& result) const
{
    Points points;
    if (result.peaks.empty()) {
        mat2d_fp32& map = *result.ResEngMap;
        KOVPrivate::findpeaks(&map, map.rows, map.cols, minPreSdLever, points.peaks);
        for (const fpoint2d& peak : points.peaks) {
            result.peaks.push_back({peak.value, peak.row, peak.col});
        }
    } else {
        points.peaks.reserve(result.peaks.size());
        for (const TargetPoint& peak : result.peaks) {
            points.peaks.push_back({peak.value, peak.row, peak.col});
        }
    }
    // A weak peak among the first ones uses up its place.
    const auto places = static_cast<std::size_t>(std::max(cursorCount(result), 0));
    for (std::size_t i = 0; i < std::min(places, points.peaks.size()); ++i) {
        if (points.peaks[i].value >= minPreSdLever) {
            points.cursors.push_back(points.peaks[i]);
        }
    }
    return points;
}

void KOVOFFLineDoaObject::Private::copyToWorkingMap(const mat2d_fp32& map)
{
    if (workingMap == nullptr || workingMap->rows != map.rows || workingMap->cols != map.cols) {
        workingMap.reset(create_mat2d_fp32(map.rows, map.cols));
    }
    copyMap(map, *workingMap);
}

// Replaces the map by bumps around the cursors when several are shown; returns whether it did.
bool KOVOFFLineDoaObject::Private::regress(const std::vector<fpoint2d>& cursors)
{
    if (!multCursorEnable || cursorNum <= 0) {
        return false;
    }
    KOVGaussianProcessRegression().predit(cursors, workingMap.get(), cursorLengthScale, cursorNoise);
    return true;
}

void KOVOFFLineDoaObject::Private::findExtremes(EngMapResult& result)
{
    mat2d_fp32* map = workingMap.get();
    if (hasRegion()) {
        KOVPrivate::findMaxMinWithEllipse(map, semiAxisA, semiAxisB, result.maxSpl, result.minSpl);
        KOVPrivate::findMaxMinWithOutEllipse(map, semiAxisA, semiAxisB, result.maxSplExtern,
                                             result.minSplExtern);
    } else {
        KOVPrivate::findMaxMin(map, result.maxSpl, result.minSpl);
    }
}

// Takes the median, the level of the quiet parts, off the map and off the extremes found in it.
void KOVOFFLineDoaObject::Private::removeMedian(EngMapResult& result)
{
    const float median = KOVBlas::median2D(workingMap->data, workingMap->rows, workingMap->cols);
    if (median == 0.0F) {
        return;
    }
    for (int row = 0; row < workingMap->rows; ++row) {
        float* values = workingMap->data[row];
        std::for_each(values, values + workingMap->cols, [median](float& value) { value -= median; });
    }
    result.maxSpl.value -= median;
    result.minSpl.value -= median;
    if (hasRegion()) {
        result.maxSplExtern.value -= median;
        result.minSplExtern.value -= median;
    }
}

const KOVPrivate::Palette& KOVOFFLineDoaObject::Private::palette() const
{
    switch (palletId) {
        case DOA_PALLET_BRYW:
            return KOVPrivate::blackRedYellowPalette;
        case DOA_PALLET_GRAY:
            return KOVPrivate::greyPalette;
        default:
            return KOVPrivate::rainbowPalette;
    }
}

void KOVOFFLineDoaObject::Private::paint(const EngMapResult& result, const Points& points, bool regressed,
                                         std::uint8_t* picture)
{
    // The minimum level is meant for the map as it came; removing the median lowered the maximum against the
    // peak that was stored before, and the minimum goes down with it.
    const bool shifted = !points.peaks.empty() && !regressed;
    const auto rangeBelow = [&](float highest) {
        const float offset = shifted ? levelAbove(highest, points.peaks.front().value) : 0.0F;
        return colourRange(highest, dynamic, minPreSdLever, offset);
    };
    painter.setPictureSize(width, height);
    painter.setPalette(palette());
    painter.setMap(*workingMap);
    const LevelRange inside = rangeBelow(result.maxSpl.value);
    if (!hasRegion()) {
        painter.paint(inside, picture);
    } else if (!outsideShown) {
        painter.paintInside(inside, region, picture);
    } else {
        painter.paintInsideAndOutside(inside, rangeBelow(result.maxSplExtern.value), region, picture);
    }
}

void KOVOFFLineDoaObject::Private::render(EngMapResult& result, mat1d_uint8& image)
{
    const std::size_t imageBytes = byteCount(image);
    // A damaged recording may hold maps without cells: there is nothing to search or to colour in them.
    const mat2d_fp32& map = *result.ResEngMap;
    if (map.rows < 1 || map.cols < 1 || map.data == nullptr) {
        std::fill_n(image.data, imageBytes, std::uint8_t{0});
        return;
    }
    const Points points = choosePoints(result);
    copyToWorkingMap(map);
    const bool regressed = regress(points.cursors);
    findExtremes(result);
    removeMedian(result);

    // An image smaller than the picture receives the picture's first bytes.
    if (imageBytes >= pictureBytes()) {
        paint(result, points, regressed, image.data);
        std::fill_n(image.data + pictureBytes(), imageBytes - pictureBytes(), std::uint8_t{0});
    } else {
        scratchPicture.resize(pictureBytes());
        paint(result, points, regressed, scratchPicture.data());
        std::copy_n(scratchPicture.data(), imageBytes, image.data);
    }
}

KOVOFFLineDoaObject::KOVOFFLineDoaObject() : d(std::make_unique<Private>()) {}

KOVOFFLineDoaObject::~KOVOFFLineDoaObject() = default;

int KOVOFFLineDoaObject::init(int mapScaleA, int mapScaleB, int width, int height)
{
    return d->init(mapScaleA, mapScaleB, width, height);
}

void KOVOFFLineDoaObject::setRadius(float radius, int p, int q)
{
    d->setRadius(radius, p, q);
}

float KOVOFFLineDoaObject::getRadius()
{
    return d->radius;
}

void KOVOFFLineDoaObject::setDynamic(float dynamic)
{
    d->dynamic = dynamic;
}

float KOVOFFLineDoaObject::getDynamic()
{
    return d->dynamic;
}

void KOVOFFLineDoaObject::setMinPreSdLever(float level)
{
    d->minPreSdLever = level;
}

float KOVOFFLineDoaObject::getMinPreSdLever()
{
    return d->minPreSdLever;
}

void KOVOFFLineDoaObject::setCursorNum(int count)
{
    d->cursorNum = count;
}

int KOVOFFLineDoaObject::getCursorNum()
{
    return d->cursorNum;
}

void KOVOFFLineDoaObject::setMultCursorEnable(bool enable)
{
    d->multCursorEnable = enable;
}

bool KOVOFFLineDoaObject::getMultCursorEnable()
{
    return d->multCursorEnable;
}

void KOVOFFLineDoaObject::setIsImagerOutSideRadiusShow(bool enable)
{
    d->outsideShown = enable;
}

bool KOVOFFLineDoaObject::getIsImagerOutSideRadiusShow()
{
    return d->outsideShown;
}

void KOVOFFLineDoaObject::setPalletId(DOA_PALLET_ID palletId)
{
    d->palletId = palletId;
}

KOVOFFLineDoaObject::DOA_PALLET_ID KOVOFFLineDoaObject::getPalletId()
{
    return d->palletId;
}

void KOVOFFLineDoaObject::setImageScale(float scale)
{
    d->forceRadius = true;
    d->imageScale = scale;
    setRadius(d->radius, d->radiusSizeP, d->radiusSizeQ);
    KOVDOA_DEBUG("kovdoaobject") << "KOVOFFLineDoaObject::setImageScale" << scale;
}

float KOVOFFLineDoaObject::getImageScale()
{
    return d->imageScale;
}

void KOVOFFLineDoaObject::matcopy(mat2d_fp32* src, mat2d_fp32* dst)
{
    copyMap(*src, *dst);
}

void KOVOFFLineDoaObject::updateImagerRGB(EngMapResult* result, mat1d_uint8* image)
{
    const std::lock_guard lock(d->renderMutex);
    d->render(*result, *image);
}
