#include "tools/scene/truth.h"

#include "tools/scene/scenesimulation.h"

namespace kovtools {

using nlohmann::ordered_json;

ordered_json describeScene(const SceneSimulation& scene)
{
    const SceneOptions& options = scene.options();
    return {
        {"seed", options.seed},
        {"map", {{"rows", options.rows}, {"cols", options.cols}}},
        {"picture", {{"width", options.pictureWidth}, {"height", options.pictureHeight}}},
        {"frame_rate_hz", options.frameRate},
        {"sample_rate_hz", sampleRate},
        {"fft_length", options.fftLength},
        {"band_hz", {bandLow, bandHigh}},
        {"noise_pa", options.noise},
        {"microphones", arrayMicrophones},
        {"aperture_m", arrayAperture},
        {"field_of_view_deg",
         {{"horizontal", FieldOfView::horizontalDegrees},
          {"vertical", scene.fieldOfView().verticalDegrees()}}},
        {"distance_m", sceneDistance},
        {"frames", ordered_json::array()},
    };
}

ordered_json describeSources(const SceneSimulation& scene, const SimulatedFrame& frame, int number)
{
    const SceneOptions& options = scene.options();
    ordered_json sources = ordered_json::array();
    for (std::size_t i = 0; i < frame.sources.size(); ++i) {
        const SourceState& source = frame.sources[i];
        const Direction direction = scene.fieldOfView().direction(source.position);
        sources.push_back({
            {"name", scene.sources()[i].name},
            {"level_pa", source.level},
            {"row", mapRow(source.position, options.rows)},
            {"col", mapCol(source.position, options.cols)},
            {"x", source.position.u * options.pictureWidth},
            {"y", source.position.v * options.pictureHeight},
            {"azimuth_deg", azimuthDegrees(direction)},
            {"elevation_deg", elevationDegrees(direction)},
        });
    }
    return {{"frame", number}, {"sources", sources}};
}

}  // namespace kovtools
