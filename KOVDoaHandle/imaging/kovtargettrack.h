// Gives the peaks of successive frames stable identities.
#ifndef KOVDOA_KOVTARGETTRACK_H
#define KOVDOA_KOVTARGETTRACK_H

#include <memory>
#include <vector>

#include <KOVDoaHandle/foundation/kovdoaexport.h>
#include <KOVDoaHandle/imaging/engmapresult.h>

class KOVDOA_EXPORT KOVTargetTrack
{
public:
    KOVTargetTrack();
    ~KOVTargetTrack();
    KOVTargetTrack(const KOVTargetTrack&) = delete;
    KOVTargetTrack& operator=(const KOVTargetTrack&) = delete;

    void FeedData(std::vector<fpoint2d> points);
    std::vector<TargetPoint> getTargetPoints();
    int createId(std::vector<TargetPoint> pending);
    bool containId(std::vector<TargetPoint> list, int id);

private:
    class KOVDOA_LOCAL Private;
    std::unique_ptr<Private> d;
};

#endif
