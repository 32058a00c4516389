#include "tools/scene/soundsource.h"

#include <cmath>
#include <numbers>

#include "tools/scene/random.h"

namespace kovtools {

namespace {

constexpr double fullTurn = 2.0 * std::numbers::pi;
constexpr double loudestLevel =
    0.03;                          // Pa; 64 dB sound pressure level, a leak of compressed air at some metres
constexpr double levelStep = 1.5;  // dB from one source to the next

SoundSource makeSource(int index, int count, double turn, Random& random)
{
    SoundSource source;
    source.name = std::string(1, static_cast<char>('A' + index % 26));
    const double angle = turn + fullTurn * index / count;
    const double spread = count > 1 ? 0.20 : 0.0;
    source.u = {0.5 + spread * std::cos(angle), random.uniform(0.12, 0.18), random.uniform(5.0, 8.0),
                random.uniform(0.0, fullTurn)};
    source.v = {0.5 + spread * std::sin(angle), random.uniform(0.09, 0.15), random.uniform(4.0, 7.0),
                random.uniform(0.0, fullTurn)};
    source.level = loudestLevel * std::pow(10.0, -0.05 * levelStep * index);
    source.swell = {0.0, random.uniform(1.0, 2.0), random.uniform(1.5, 3.0), random.uniform(0.0, fullTurn)};
    source.humpFrequency = random.uniform(14e3, 26e3);
    source.humpWidth = random.uniform(6e3, 10e3);
    return source;
}

}  // namespace

double SoundSource::Swing::at(double time) const
{
    return middle + amplitude * std::sin(fullTurn * time / period + phase);
}

double SoundSource::levelAt(double time) const
{
    return level * std::pow(10.0, 0.05 * swell.at(time));
}

double SoundSource::powerDensity(double frequency) const
{
    const double offset = (frequency - humpFrequency) / humpWidth;
    return 1.0 / (1.0 + offset * offset);
}

std::vector<SoundSource> makeSources(int count, Random& random)
{
    const double turn = random.uniform(0.0, fullTurn);
    std::vector<SoundSource> sources;
    for (int i = 0; i < count; ++i) {
        sources.push_back(makeSource(i, count, turn, random));
    }
    return sources;
}

}  // namespace kovtools
