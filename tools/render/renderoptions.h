// What a user can choose about pictures of a recording.
#ifndef KOVTOOLS_RENDEROPTIONS_H
#define KOVTOOLS_RENDEROPTIONS_H

#include <opencv2/core/types.hpp>

namespace kovtools {

struct RenderOptions
{
    int palette = 0;              // 0 rainbow, 1 hot, 2 grey
    double dynamicRange = 6.0;    // dB
    double minimumLevel = 1e-8;   // linear, in the unit of the maps
    double referenceLevel = 1.0;  // what the dB of levels refer to, in the unit of the maps
    int radius = 0;               // of the region of interest; 0: none
    cv::Size radiusSize;          // what the radius is measured against; empty: the picture's size
    bool outside = false;         // colours outside the region too
    int cursors = 1;
    bool severalCursors = false;
    double imageScale = 1.0;
    cv::Size picture;    // pixels
    double blend = 0.6;  // share of the overlay's colour where it covers the camera picture
    bool plain = false;  // no marks, no colour bar, no text
    double frameRate = 25.0;
    bool track = false;    // marks the tracks of peaks with their identities
    int trackedPeaks = 0;  // peaks of a frame that are followed, the strongest ones; 0: all
};

}  // namespace kovtools

#endif
