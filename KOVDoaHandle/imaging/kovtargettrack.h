// Gives the peaks of successive frames stable identities.
#ifndef KOVDOA_KOVTARGETTRACK_H
#define KOVDOA_KOVTARGETTRACK_H

#include <memory>
#include <vector>

#include <KOVDoaHandle/foundation/kovdoaexport.h>
#include <KOVDoaHandle/imaging/engmapresult.h>

// A track is a peak that is followed from frame to frame. It starts with life 10, gains 1 with each point that matches
// it (up to 50) and loses 1 in each frame in which none does; below 1 it is dropped. Only tracks with a life above 25
// are reported, so that a flash of noise never gets a cursor: a track appears with the 16th match after its birth if no
// frame lacked it. That is its 17th frame, or an earlier one when several points of a frame matched it. One at full
// life outlasts 49 frames without it (reported during the first 24 of them).
//
// A point matches a track less than 5 map cells away. Identities are small: the lowest free one, from 0, is given out.
//
// Threads: one thread feeds and reads a tracker. Timing: points x tracks distance tests a frame; allocates.
class KOVDOA_EXPORT KOVTargetTrack
{
public:
    // Without tracks.
    KOVTargetTrack();
    ~KOVTargetTrack();
    KOVTargetTrack(const KOVTargetTrack&) = delete;
    KOVTargetTrack& operator=(const KOVTargetTrack&) = delete;

    // One frame's peaks, at map rows and columns; any 32-bit coordinates and any values. Each point, in order, goes to
    // the matching track with the lowest identity, which takes over its value and position; so two points may go to
    // the same track, and the later one's position remains. A point without a match starts a track, which the points
    // after it in the same frame do not see.
    void FeedData(std::vector<fpoint2d> points);

    // The tracks with a life above 25, by ascending identity. `matched` tells those that the last frame found again.
    std::vector<TargetPoint> getTargetPoints();

    // The lowest identity from 0 that neither a track nor an element of `pending` has.
    int createId(std::vector<TargetPoint> pending);

    // Whether an element of `list` has this identity.
    bool containId(std::vector<TargetPoint> list, int id);

private:
    class KOVDOA_LOCAL Private;
    std::unique_ptr<Private> d;
};

#endif
