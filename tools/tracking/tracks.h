// Tracks over a recording, collected from the frames that report them.
#ifndef KOVTOOLS_TRACKS_H
#define KOVTOOLS_TRACKS_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include <KOVDoaHandle/imaging/engmapresult.h>

namespace kovtools {

struct TrackPoint
{
    int frame;  // from 1
    int row;
    int col;
    float level;  // in the unit of the map, where the peak was last seen
    int life;
};

// One source while it was followed. It is not reported while its life is low, so frames may be missing. Identities are
// given out again after a track has died: a later track of the same identity is another one.
struct Track
{
    int id;
    std::vector<TrackPoint> points;  // by ascending frame
};

class TrackCollector
{
public:
    // What frame `number` reports; frames come in order.
    void add(int number, const std::vector<TargetPoint>& reported);

    // In the order of their first frames.
    const std::vector<Track>& tracks() const { return m_tracks; }

private:
    std::vector<Track> m_tracks;
};

// "frame,id,row,col,level,life" and a line for each track in each frame.
std::string tracksCsv(const std::vector<Track>& tracks);

// Keys `id`, `first_frame`, `last_frame` and `points` (`frame`, `row`, `col`, `level`, `life`) for each track.
nlohmann::ordered_json tracksJson(const std::vector<Track>& tracks);

}  // namespace kovtools

#endif
