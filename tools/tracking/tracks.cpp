#include "tools/tracking/tracks.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <utility>

namespace kovtools {

using nlohmann::ordered_json;

namespace {

// Frames from a track's last report to the first one of another track that has its identity, at least: 26 without a
// peak until it is dead, one until the identity is given out again, 16 until the new track is confirmed.
constexpr int shortestSuccession = 26 + 1 + 16;

}  // namespace

void TrackCollector::add(int number, const std::vector<TargetPoint>& reported)
{
    for (const TargetPoint& target : reported) {
        const TrackPoint point{number, target.row, target.col, target.value, target.life};
        // The latest of that identity, unless it may have died since.
        const auto found = std::find_if(m_tracks.rbegin(), m_tracks.rend(),
                                        [&target](const Track& track) { return track.id == target.id; });
        if (found != m_tracks.rend() && number - found->points.back().frame < shortestSuccession) {
            found->points.push_back(point);
        } else {
            m_tracks.push_back({target.id, {point}});
        }
    }
}

std::string tracksCsv(const std::vector<Track>& tracks)
{
    std::map<std::pair<int, int>, const TrackPoint*> byFrameAndId;
    for (const Track& track : tracks) {
        for (const TrackPoint& point : track.points) {
            byFrameAndId[{point.frame, track.id}] = &point;
        }
    }
    std::string text = "frame,id,row,col,level,life\n";
    for (const auto& [key, point] : byFrameAndId) {
        std::array<char, 128> line{};
        std::snprintf(line.data(), line.size(), "%d,%d,%d,%d,%.9g,%d\n", point->frame, key.second, point->row,
                      point->col, static_cast<double>(point->level), point->life);
        text += line.data();
    }
    return text;
}

ordered_json tracksJson(const std::vector<Track>& tracks)
{
    ordered_json list = ordered_json::array();
    for (const Track& track : tracks) {
        ordered_json points = ordered_json::array();
        for (const TrackPoint& point : track.points) {
            points.push_back({{"frame", point.frame},
                              {"row", point.row},
                              {"col", point.col},
                              {"level", point.level},
                              {"life", point.life}});
        }
        list.push_back({{"id", track.id},
                        {"first_frame", track.points.front().frame},
                        {"last_frame", track.points.back().frame},
                        {"points", std::move(points)}});
    }
    return list;
}

}  // namespace kovtools
