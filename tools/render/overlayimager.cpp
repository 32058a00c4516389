#include "tools/render/overlayimager.h"

#include <KOVDoaHandle/imaging/kovdoaobject.h>

namespace kovtools {

OverlayImager::OverlayImager(const RenderOptions& options, const RegionEllipse& region)
    : m_picture(options.picture),
      m_imager(CreateDoaObject()),
      m_image(createMat1dUint8(options.picture.height, options.picture.width * 3))
{
    KOVOFFLineDoaObject* const imager = m_imager.get();
    DoaObjectInit(imager, region.mapScaleA, region.mapScaleB, m_picture.width, m_picture.height);
    DoaObjectSetDynamic(imager, static_cast<float>(options.dynamicRange));
    DoaObjectSetMinPreSdLever(imager, static_cast<float>(options.minimumLevel));
    DoaObjectSetPalletId(imager, options.palette);
    DoaObjectSetCursorNum(imager, options.cursors);
    DoaObjectSetMultCursorEnable(imager, options.severalCursors ? 1 : 0);
    DoaObjectSetIsImagerOutSideRadiusShow(imager, options.outside ? 1 : 0);
    DoaObjectSetImageScale(imager, static_cast<float>(options.imageScale));
    if (region.active) {
        const cv::Size measure = options.radiusSize.empty() ? options.picture : options.radiusSize;
        DoaObjectSetRadius(imager, options.radius, measure.width, measure.height);
    }
}

cv::Mat OverlayImager::render(EngMapResult& frame)
{
    DoaObjectUpdateImagerRGB(m_imager.get(), &frame, m_image.get());
    return cv::Mat(m_picture, CV_8UC3, getMat1dUint8Data(m_image.get()));
}

}  // namespace kovtools
