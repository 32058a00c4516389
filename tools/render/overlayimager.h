// The library's imager, set up as the user asked, through its plain exports.
#ifndef KOVTOOLS_OVERLAYIMAGER_H
#define KOVTOOLS_OVERLAYIMAGER_H

#include <KOVDoaHandle/api/containers.h>
#include <KOVDoaHandle/api/imager.h>

#include <memory>
#include <opencv2/core/mat.hpp>

#include "tools/render/regionellipse.h"
#include "tools/render/renderoptions.h"

namespace kovtools {

class OverlayImager
{
public:
    OverlayImager(const RenderOptions& options, const RegionEllipse& region);

    // The overlay of one frame: blue, green, red; black where nothing is shown. The pixels are this object's
    // and change with the next call. The frame's extremes and, if it had none, its peaks are filled in.
    cv::Mat render(EngMapResult& frame);

private:
    struct ReleaseImager
    {
        void operator()(KOVOFFLineDoaObject* imager) const { ReleaseDoaObject(imager); }
    };
    struct DestroyImage
    {
        void operator()(mat1d_uint8* image) const { destroyMat1dUint8(image); }
    };

    cv::Size m_picture;
    std::unique_ptr<KOVOFFLineDoaObject, ReleaseImager> m_imager;
    std::unique_ptr<mat1d_uint8, DestroyImage> m_image;
};

}  // namespace kovtools

#endif
