#include "tools/arrayaudio/arraytruth.h"

#include "tools/arrayaudio/arraysimulation.h"
#include "tools/scene/fieldofview.h"
#include "tools/scene/scenesimulation.h"

namespace kovtools {

using nlohmann::ordered_json;

namespace {

ordered_json describeSource(const StandingSource& source, const std::string& name, const FieldOfView& view)
{
    ordered_json described{
        {"name", name},
        {"kind", kindName(source.kind)},
        {"azimuth_deg", source.azimuth},
        {"elevation_deg", source.elevation},
        {"distance_m", source.distance},
        {"level_at_1_m_pa", source.level},
        {"level_at_array_pa", source.level / source.distance},
        {"frequency_hz", source.frequency},
        {"u", nullptr},
        {"v", nullptr},
    };
    if (source.direction().z > 0.0) {
        const PicturePosition position = view.position(source.direction());
        described["u"] = position.u;
        described["v"] = position.v;
    }
    return described;
}

ordered_json describePairs(const std::vector<MicrophonePair>& pairs)
{
    ordered_json list = ordered_json::array();
    for (const MicrophonePair& pair : pairs) {
        list.push_back({pair.first, pair.second});
    }
    return list;
}

}  // namespace

ordered_json describeArray(const ArraySimulationOptions& options, std::int64_t samples,
                           const FieldOfView& view)
{
    ordered_json described{
        {"seed", options.seed},
        {"sample_rate_hz", sampleRate},
        {"samples", samples},
        {"noise_pa", options.noise},
        {"band_hz", {bandLow, bandHigh}},
        {"sources", ordered_json::array()},
        {"dead", options.broken.dead},
        {"duplicates", describePairs(options.broken.duplicates)},
        {"swaps", describePairs(options.broken.swaps)},
        {"microphones_m", ordered_json::array()},
    };
    for (std::size_t i = 0; i < options.sources.size(); ++i) {
        described["sources"].push_back(describeSource(options.sources[i], sourceName(i), view));
    }
    for (const Microphone& microphone : options.array) {
        described["microphones_m"].push_back({microphone.x, microphone.y, microphone.z});
    }
    return described;
}

}  // namespace kovtools
