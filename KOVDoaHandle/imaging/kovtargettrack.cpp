// Tracks lie in one array by ascending identity: a frame walks all of them for each point, and hardly ever adds or
// removes one.
#include <KOVDoaHandle/imaging/kovtargettrack.h>

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace {

constexpr float matchingRadiusSquared = 25.0F;  // map cells
constexpr int startingLife = 10;
constexpr int fullLife = 50;
constexpr int reportedAbove = 25;

// Integer difference of two coordinates as single precision; 64 bits because recordings may hold any 32-bit ones.
float difference(std::int32_t a, std::int32_t b)
{
    return static_cast<float>(static_cast<std::int64_t>(a) - b);
}

bool isMatch(const TargetPoint& track, const fpoint2d& point)
{
    const float down = difference(track.row, point.row);
    const float right = difference(track.col, point.col);
    return down * down + right * right < matchingRadiusSquared;
}

void moveTo(TargetPoint& track, const fpoint2d& point)
{
    track.value = point.value;
    track.row = point.row;
    track.col = point.col;
    track.matched = true;
}

bool hasLowerId(const TargetPoint& a, const TargetPoint& b)
{
    return a.id < b.id;
}

}  // namespace

class KOVTargetTrack::Private
{
public:
    void followOrCollect(const std::vector<fpoint2d>& points, std::vector<TargetPoint>& pending);
    void age();
    void insert(const std::vector<TargetPoint>& pending);

    std::vector<TargetPoint> tracks;  // by ascending identity
};

KOVTargetTrack::KOVTargetTrack() : d(std::make_unique<Private>()) {}

KOVTargetTrack::~KOVTargetTrack() = default;

void KOVTargetTrack::FeedData(std::vector<fpoint2d> points)
{
    for (TargetPoint& track : d->tracks) {
        track.matched = false;
    }
    std::vector<TargetPoint> pending;
    d->followOrCollect(points, pending);
    d->age();
    // Only now, so that what was born in this frame is not aged by it.
    d->insert(pending);
}

// The tracks stay the same during this step, so the lowest free identity only grows from one newcomer to the next; the
// search for it goes on where it ended.
void KOVTargetTrack::Private::followOrCollect(const std::vector<fpoint2d>& points,
                                              std::vector<TargetPoint>& pending)
{
    int nextId = 0;
    auto taken = tracks.begin();
    for (const fpoint2d& point : points) {
        const auto track = std::find_if(tracks.begin(), tracks.end(), [&point](const TargetPoint& candidate) {
            return isMatch(candidate, point);
        });
        if (track != tracks.end()) {
            track->life = std::min(track->life + 1, fullLife);
            moveTo(*track, point);
            continue;
        }
        for (; taken != tracks.end() && taken->id == nextId; ++taken) {
            ++nextId;
        }
        TargetPoint& newcomer = pending.emplace_back();
        newcomer.id = nextId++;
        newcomer.life = startingLife;
        moveTo(newcomer, point);
    }
}

void KOVTargetTrack::Private::age()
{
    for (TargetPoint& track : tracks) {
        if (!track.matched) {
            --track.life;
        }
    }
    std::erase_if(tracks, [](const TargetPoint& track) { return track.life < 1; });
}

void KOVTargetTrack::Private::insert(const std::vector<TargetPoint>& pending)
{
    const auto known = static_cast<std::ptrdiff_t>(tracks.size());
    tracks.insert(tracks.end(), pending.begin(), pending.end());
    std::inplace_merge(tracks.begin(), tracks.begin() + known, tracks.end(), hasLowerId);
}

std::vector<TargetPoint> KOVTargetTrack::getTargetPoints()
{
    std::vector<TargetPoint> reported;
    std::copy_if(d->tracks.begin(), d->tracks.end(), std::back_inserter(reported),
                 [](const TargetPoint& track) { return track.life > reportedAbove; });
    return reported;
}

int KOVTargetTrack::createId(std::vector<TargetPoint> pending)
{
    // As many identities as these cannot all be above the lowest free one.
    std::vector<bool> isTaken(d->tracks.size() + pending.size() + 1);
    const auto take = [&isTaken](const TargetPoint& track) {
        if (track.id >= 0 && static_cast<std::size_t>(track.id) < isTaken.size()) {
            isTaken[static_cast<std::size_t>(track.id)] = true;
        }
    };
    std::for_each(d->tracks.begin(), d->tracks.end(), take);
    std::for_each(pending.begin(), pending.end(), take);
    return static_cast<int>(std::find(isTaken.begin(), isTaken.end(), false) - isTaken.begin());
}

bool KOVTargetTrack::containId(std::vector<TargetPoint> list, int id)
{
    return std::any_of(list.begin(), list.end(), [id](const TargetPoint& track) { return track.id == id; });
}
