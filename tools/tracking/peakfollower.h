// The library's target tracking over the frames of a recording.
#ifndef KOVTOOLS_PEAKFOLLOWER_H
#define KOVTOOLS_PEAKFOLLOWER_H

#include <KOVDoaHandle/imaging/kovtargettrack.h>

#include <vector>

namespace kovtools {

struct FollowOptions
{
    double minimumLevel = 1e-8;  // of peaks that have to be searched for, in the unit of the maps
    int strongest = 0;           // peaks of a frame that are followed; 0: all
};

// The peaks of a frame, in the order in which they are stored. A frame without any is searched for them as the imager
// does it: local maxima above the minimum level, the strongest first. Of more than `strongest` the weaker ones are left
// out.
std::vector<fpoint2d> peaksOf(const EngMapResult& frame, const FollowOptions& options);

class PeakFollower
{
public:
    explicit PeakFollower(const FollowOptions& options) : m_options(options) {}

    // Takes the next frame and returns the tracks that have been confirmed by then, by ascending identity.
    std::vector<TargetPoint> follow(const EngMapResult& frame);

private:
    FollowOptions m_options;
    KOVTargetTrack m_tracker;
};

}  // namespace kovtools

#endif
