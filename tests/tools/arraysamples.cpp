#include "tests/tools/arraysamples.h"

#include <algorithm>

#include "tools/arrayaudio/arraywriter.h"

namespace kovtools::tests {

ArraySimulationOptions defaultArrayScene(std::uint64_t seed)
{
    ArraySimulationOptions options;
    options.array = sunflowerSpiral();
    options.sources = defaultSources();
    options.seed = seed;
    return options;
}

std::vector<std::vector<float>> simulated(const ArraySimulationOptions& options, int samples)
{
    ArraySimulation simulation(options);
    std::vector<std::vector<float>> rows(options.array.size());
    for (int done = 0; done < samples; done += ArraySimulation::step) {
        const float* const* const step = simulation.next();
        for (std::size_t m = 0; m < rows.size(); ++m) {
            rows[m].insert(rows[m].end(), step[m], step[m] + std::min(samples - done, ArraySimulation::step));
        }
    }
    return rows;
}

void writeArray(const std::filesystem::path& folder, const std::vector<std::vector<float>>& rows,
                int sampleRate)
{
    std::vector<const float*> pointers;
    for (const std::vector<float>& row : rows) {
        pointers.push_back(row.data());
    }
    const auto samples = static_cast<int>(rows.front().size());
    ArrayWriter writer(folder, static_cast<int>(rows.size()), sampleRate, samples);
    writer.append(pointers.data(), samples);
    writer.commit();
}

void writeArray(const std::filesystem::path& folder, const ArraySimulationOptions& options, int samples)
{
    writeArray(folder, simulated(options, samples));
}

}  // namespace kovtools::tests
