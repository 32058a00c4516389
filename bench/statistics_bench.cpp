// The statistics of a frame. Peer of the median: std::sort of a copy. `Operation/size` is ours, the same name
// with
// `/peer` the peer; the ratio of the two is what counts.
#include <benchmark/benchmark.h>

#include <KOVDoaHandle/diagnostics/kovblas.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

namespace {

constexpr int mapRows = 48;
constexpr int mapCols = 64;
// Enough different maps that the branch predictor cannot learn them by heart.
constexpr std::size_t mapCount = 64;

enum class Content { Noise, Smooth };

// A few broad bumps over a floor with a little noise, as a beamformer gives them.
float smoothLevel(int row, int col, float sourceRow, float sourceCol, float noise)
{
    const float dr = static_cast<float>(row) - sourceRow;
    const float dc = static_cast<float>(col) - sourceCol;
    return 0.02F + std::exp(-(dr * dr + dc * dc) / 60.0F) + 0.002F * noise;
}

class Maps
{
public:
    explicit Maps(Content content)
    {
        std::mt19937 random(17);
        std::uniform_real_distribution<float> uniform(0.0F, 1.0F);
        for (std::size_t map = 0; map < mapCount; ++map) {
            const float sourceRow = uniform(random) * mapRows;
            const float sourceCol = uniform(random) * mapCols;
            for (int row = 0; row < mapRows; ++row) {
                for (int col = 0; col < mapCols; ++col) {
                    const float noise = uniform(random);
                    m_cells.push_back(content == Content::Noise
                                          ? noise
                                          : smoothLevel(row, col, sourceRow, sourceCol, noise));
                }
            }
        }
        for (std::size_t row = 0; row < mapCount * mapRows; ++row) {
            m_rows.push_back(m_cells.data() + row * mapCols);
        }
    }

    // The maps one after the other, over and over.
    float** next()
    {
        m_current = (m_current + 1) % mapCount;
        return m_rows.data() + m_current * mapRows;
    }

private:
    std::vector<float> m_cells;
    std::vector<float*> m_rows;
    std::size_t m_current = 0;
};

void medianOurs(benchmark::State& state, Content content)
{
    Maps maps(content);
    for ([[maybe_unused]] auto iteration : state) {
        benchmark::DoNotOptimize(KOVBlas::median2D(maps.next(), mapRows, mapCols));
    }
}

void medianPeer(benchmark::State& state, Content content)
{
    Maps maps(content);
    std::vector<float> copy(static_cast<std::size_t>(mapRows) * mapCols);
    for ([[maybe_unused]] auto iteration : state) {
        float** rows = maps.next();
        auto end = copy.begin();
        for (int row = 0; row < mapRows; ++row) {
            end = std::copy(rows[row], rows[row] + mapCols, end);
        }
        std::sort(copy.begin(), copy.end());
        benchmark::DoNotOptimize(copy[copy.size() / 2]);
    }
}

}  // namespace

BENCHMARK_CAPTURE(medianOurs, noise, Content::Noise)->Name("Statistics/Median2D/64x48");
BENCHMARK_CAPTURE(medianPeer, noise, Content::Noise)->Name("Statistics/Median2D/64x48/peer");
BENCHMARK_CAPTURE(medianOurs, smooth, Content::Smooth)->Name("Statistics/Median2D/64x48/smooth");
BENCHMARK_CAPTURE(medianPeer, smooth, Content::Smooth)->Name("Statistics/Median2D/64x48/smooth/peer");
