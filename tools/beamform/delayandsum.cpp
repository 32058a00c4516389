#include "tools/beamform/delayandsum.h"

#include <algorithm>
#include <cstddef>
#include <numbers>
#include <utility>

#include "tools/support/interrupt.h"
#include "tools/support/parallel.h"

namespace kovtools {

namespace {

constexpr int lanes = BeamKernels::lanes;
constexpr int tileLooks = BeamKernels::looks;

}  // namespace

double steeringPhase(const Microphone& microphone, const Direction& direction, double frequency)
{
    return 2.0 * std::numbers::pi * frequency * advance(microphone, direction, infinitelyFar);
}

MicrophoneSpectra::MicrophoneSpectra(int microphones, int snapshots)
    : m_microphones(microphones), m_snapshots(snapshots), m_values(groupOffset(groups()))
{
}

std::size_t MicrophoneSpectra::groupOffset(int index) const
{
    return static_cast<std::size_t>(index) * static_cast<std::size_t>(m_microphones) * 2 * lanes;
}

std::size_t MicrophoneSpectra::offset(int microphone, int snapshot) const
{
    return groupOffset(snapshot / lanes) +
           static_cast<std::size_t>(microphone * 2 * lanes + snapshot % lanes);
}

void MicrophoneSpectra::set(int microphone, int snapshot, std::complex<float> value)
{
    float* const real = m_values.data() + offset(microphone, snapshot);
    real[0] = value.real();
    real[lanes] = value.imag();
}

std::complex<float> MicrophoneSpectra::at(int microphone, int snapshot) const
{
    const float* const real = m_values.data() + offset(microphone, snapshot);
    return {real[0], real[lanes]};
}

// What is worked on together: a few looks, whose delays serve all bins.
struct DelayAndSum::Tile
{
    Tile(std::size_t microphones, int groups)
        : advances(microphones * tileLooks),
          real(advances.size()),
          imaginary(advances.size()),
          powers(static_cast<std::size_t>(groups * tileLooks * lanes))
    {
    }

    std::vector<float> advances;   // s, looks x microphones
    std::vector<float> real;       // of the steering factors, likewise
    std::vector<float> imaginary;  //
    std::vector<float> powers;     // groups x looks x lanes
};

DelayAndSum::DelayAndSum(std::vector<Microphone> array, std::vector<Direction> looks, double distance)
    : m_array(std::move(array)), m_looks(std::move(looks)), m_distance(distance)
{
}

void DelayAndSum::addPowers(const std::vector<BeamformedBin>& bins, int run, std::vector<float>& sums) const
{
    if (bins.empty()) {
        return;
    }
    inParallel(static_cast<int>(m_looks.size()), tileLooks, [&](int first, int end) {
        Tile tile(m_array.size(), bins.front().spectra.groups());
        for (int look = first; look < end; look += tileLooks) {
            throwIfInterrupted();  // a large map at many frequencies takes minutes
            addTile(bins, run, static_cast<std::size_t>(look), tile, sums);
        }
    });
}

void DelayAndSum::addTile(const std::vector<BeamformedBin>& bins, int run, std::size_t firstLook, Tile& tile,
                          std::vector<float>& sums) const
{
    const BeamKernels& kernels = beamKernels();
    const auto microphones = static_cast<int>(m_array.size());
    float* advanceOf = tile.advances.data();
    for (std::size_t i = 0; i < tileLooks; ++i) {
        // Past the last look the tile is filled up with it.
        const Direction& look = m_looks[std::min(firstLook + i, m_looks.size() - 1)];
        for (const Microphone& microphone : m_array) {
            *advanceOf++ = static_cast<float>(advance(microphone, look, m_distance));
        }
    }
    std::fill(tile.powers.begin(), tile.powers.end(), 0.0F);
    const float mean = 1.0F / (static_cast<float>(microphones) * static_cast<float>(microphones));
    for (const BeamformedBin& bin : bins) {
        kernels.steer(tile.advances.data(), microphones * tileLooks, static_cast<float>(bin.frequency),
                      tile.real.data(), tile.imaginary.data());
        for (int group = 0; group < bin.spectra.groups(); ++group) {
            kernels.addPowers(bin.spectra.group(group), microphones, tile.real.data(), tile.imaginary.data(),
                              bin.weight * mean,
                              tile.powers.data() + static_cast<std::ptrdiff_t>(group) * tileLooks * lanes);
        }
    }
    const int snapshots = bins.front().spectra.snapshots();
    const auto runs = static_cast<std::size_t>((snapshots + run - 1) / run);
    const std::size_t looks = std::min<std::size_t>(tileLooks, m_looks.size() - firstLook);
    for (std::size_t i = 0; i < looks; ++i) {
        float* const sum = sums.data() + (firstLook + i) * runs;
        for (int s = 0; s < snapshots; ++s) {
            const int group = s / lanes;
            sum[s / run] += tile.powers[static_cast<std::size_t>(
                (group * tileLooks + static_cast<int>(i)) * lanes + s % lanes)];
        }
    }
}

}  // namespace kovtools
