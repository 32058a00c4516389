#include "prpdoracle.h"

#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace prpdoracle {

namespace {

constexpr std::int64_t memorySamples = 480000;

struct Geometry
{
    int cycle, span, alignment, measured, offset, otherOffset, near, far;
};

Geometry geometry(bool sixtyHertz)
{
    return sixtyHertz ? Geometry{200, 50624, 4800, 4224, 45, 155, 66, 133}
                      : Geometry{240, 60544, 5760, 4864, 54, 186, 80, 160};
}

float decibels(float amplitude)
{
    const float logarithm = std::log10(amplitude);
    const float scaled = 20.0F * logarithm;
    return scaled + 120.0F;
}

bool accepts(float peak, float floor)
{
    const float p = decibels(peak);
    const float d = p - decibels(floor);
    if (p >= 54.0F) {
        return d > 7.5F;
    }
    if (p >= 51.0F) {
        return d > 9.0F;
    }
    if (p >= 48.0F) {
        return d > 10.5F;
    }
    if (p >= 45.0F) {
        return d > 12.0F;
    }
    if (p >= 42.0F) {
        return d > 13.5F;
    }
    return d > 15.0F;
}

// Index 0 of a span of values is left out.
float sumWithoutFirst(const float* x, int n)
{
    float sum = 0.0F;
    for (int i = 1; i < n; ++i) {
        sum = sum + x[i];
    }
    return sum;
}

// The power in the lower half of the spectrum of a frame.
std::vector<float> powerSpectrum(const std::vector<float>& frame, int n)
{
    const auto size = static_cast<std::size_t>(n);
    fftwf_complex* in = fftwf_alloc_complex(size);
    fftwf_complex* out = fftwf_alloc_complex(size);
    const fftwf_plan plan = fftwf_plan_dft_1d(n, in, out, FFTW_FORWARD, FFTW_ESTIMATE);
    for (std::size_t i = 0; i < size; ++i) {
        in[i][0] = frame[i];
        in[i][1] = 0.0F;
    }
    fftwf_execute(plan);
    std::vector<float> power;
    for (std::size_t k = 0; k < size / 2; ++k) {
        const float re = out[k][0] * out[k][0];
        const float im = out[k][1] * out[k][1];
        power.push_back(re + im);
    }
    fftwf_destroy_plan(plan);
    fftwf_free(in);
    fftwf_free(out);
    return power;
}

float percent(int votes, int all)
{
    return static_cast<float>(votes * 100) / static_cast<float>(all);
}

}  // namespace

Oracle::Oracle(Model model) : frame(2400, 0.0F), m_model(std::move(model)), m_memory(memorySamples, 0.0F)
{
    for (int i = 0; i < 2; ++i) {
        m_filters.push_back(
            std::make_unique<KOVFilter>(KOVIIRDesigner::createHighPass(25000.0F, 0.707F, 1.0F, 96000.0F)));
    }
    reset();
}

void Oracle::reset()
{
    result = PRPDResult{0, 0, 0, 0, 0, 1, 0, 2, 0, 3};
    votes = Votes{};
    m_total = 0;
    m_reference = m_displayed = m_average = 0.0F;
    m_hold = 0;
    for (const auto& filter : m_filters) {
        filter->reset();
    }
}

void Oracle::feed(const std::vector<float>& samples)
{
    for (float sample : samples) {
        for (const auto& filter : m_filters) {
            filter->filter(&sample, &sample, 1);
        }
        m_memory[static_cast<std::size_t>(m_total % memorySamples)] = sample;
        ++m_total;
    }
}

float Oracle::at(std::int64_t index) const
{
    return m_memory[static_cast<std::size_t>((index + memorySamples) % memorySamples)];
}

bool Oracle::poll(bool sixtyHertz)
{
    const int n = sixtyHertz ? 2000 : 2400;
    const bool built = m_total > (sixtyHertz ? 50623 : 60543);
    if (built) {
        build(sixtyHertz);
    }
    const std::vector<float> power = powerSpectrum(frame, n);
    result.F1 = std::sqrt(power[10]) / static_cast<float>(8 * n);
    result.F2 = std::sqrt(power[20]) / static_cast<float>(8 * n);
    if (!built) {
        return false;
    }
    const float total = sumWithoutFirst(power.data(), n / 2);
    float harmonics = 0.0F;
    for (std::size_t bin = 10; bin <= 80; bin += 10) {
        harmonics = harmonics + power[bin];
    }
    const bool bound = std::isfinite(result.F1) && std::isfinite(result.F2) && harmonics / total > 0.25F &&
                       (power[10] > 0.05F * total || power[20] > 0.05F * total);
    if (!bound) {
        ++votes.noise;
    } else if (result.F1 > result.F2) {
        ++votes.corona;
    } else {
        classify();
    }
    const int all = votes.corona + votes.alongSurface + votes.suspension + votes.noise;
    if (all >= 26) {
        result.coronaPercent = percent(votes.corona, all);
        result.alongSurfacePercent = percent(votes.alongSurface, all);
        result.suspensionPercent = percent(votes.suspension, all);
    }
    return true;
}

void Oracle::build(bool sixtyHertz)
{
    const Geometry g = geometry(sixtyHertz);
    const std::int64_t last = m_total - m_total % g.alignment - 2;
    std::vector<float> work;
    for (std::int64_t index = last - g.span + 1; index <= last; ++index) {
        work.push_back(std::fabs(at(index)));
    }

    float squares = 0.0F;
    float peak = work[0];
    for (int i = 0; i < g.measured; ++i) {
        const float value = work[static_cast<std::size_t>(i)];
        const float square = value * value;
        squares = squares + square;
        peak = value > peak ? value : peak;
    }
    const float rms = std::sqrt(squares / static_cast<float>(g.measured));
    if (std::isfinite(result.RMS) && result.RMS > rms) {
        const float both = rms + result.RMS;
        result.RMS = both / 2.0F;
    } else {
        result.RMS = rms;
    }
    result.peak = peak > 1.0F ? 1.0F : peak;

    std::vector<float> envelope;
    for (std::size_t bin = 0; bin < work.size() / 8; ++bin) {
        envelope.push_back(sumWithoutFirst(work.data() + 8 * bin, 8));
    }
    track(envelope, accepts(result.peak, result.RMS), sixtyHertz);

    const int phase = static_cast<int>(std::trunc(m_displayed));
    int offset = phase - g.offset;
    offset = offset < 1 ? phase + g.otherOffset : offset % g.cycle;
    for (int page = 0; page < 10; ++page) {
        for (int j = 0; j < g.cycle; ++j) {
            const auto first = static_cast<std::size_t>(offset + 3 * g.cycle * page + j);
            const auto cycle = static_cast<std::size_t>(g.cycle);
            const float two = envelope.at(first) + envelope.at(first + cycle);
            frame[static_cast<std::size_t>(page * g.cycle + j)] = two + envelope.at(first + 2 * cycle);
        }
    }
}

void Oracle::track(const std::vector<float>& envelope, bool accepted, bool sixtyHertz)
{
    const Geometry g = geometry(sixtyHertz);
    if (!accepted) {
        m_hold = 0;
    } else if (m_hold > 0) {
        m_hold = m_hold - 1;
    } else {
        ++searches;
        std::vector<int> positions;
        for (int k = 0; k < 31; ++k) {
            int best = 0;
            for (int j = 1; j < g.cycle; ++j) {
                if (envelope.at(static_cast<std::size_t>(k * g.cycle + j)) >
                    envelope.at(static_cast<std::size_t>(k * g.cycle + best))) {
                    best = j;
                }
            }
            positions.push_back(best);
        }
        positions.resize(4);
        std::sort(positions.begin(), positions.end());
        int chosen = positions[3];
        if (positions[3] - positions[0] > 80) {
            chosen = 0;
            auto bound = static_cast<float>(g.cycle);
            for (const int position : positions) {
                const float distance = std::fabs(static_cast<float>(position) - m_reference);
                if (distance < bound) {
                    bound = distance;
                    chosen = position;
                }
            }
        }
        m_hold = 4;
        m_reference = static_cast<float>(chosen);
    }

    const float d = m_displayed;
    const auto near = static_cast<float>(g.near);
    if (std::fabs(d - m_reference) < near) {
        const int whole = static_cast<int>(std::trunc(m_reference - d));
        m_displayed = d + static_cast<float>(whole / 8);
    } else if (std::fabs(d - m_average) > near) {
        const bool far = std::fabs(d - m_average) > static_cast<float>(g.far);
        const float shift = far ? static_cast<float>(g.cycle) : static_cast<float>(g.cycle / 2);
        const float candidate = d > m_average ? d - shift : d + shift;
        const float rest = m_reference - candidate;
        m_displayed = candidate + rest * 0.25F;
    }
    const double part = 0.3 * static_cast<double>(m_reference);
    const double former = 0.7 * static_cast<double>(m_average);
    m_average = static_cast<float>(part + former);
}

std::vector<float> features(const std::vector<float>& frame)
{
    std::vector<float> profile;
    for (std::size_t j = 0; j < 240; ++j) {
        const float two = frame[j] + frame[j + 240];
        const float three = two + frame[j + 480];
        profile.push_back(three / 3.0F);
    }
    const float max = *std::max_element(profile.begin(), profile.end());
    const float min = *std::min_element(profile.begin(), profile.end());
    float squares = 0.0F;
    float magnitudes = 0.0F;
    std::vector<float> norm;
    for (const float value : profile) {
        norm.push_back((value - min) / (max - min));
        squares = squares + norm.back() * norm.back();
        magnitudes = magnitudes + std::fabs(norm.back());
    }
    const float rms = std::sqrt(squares / 240.0F);
    const float centre = rms / 240.0F;
    float variance = 0.0F;
    for (const float value : norm) {
        const float off = value - centre;
        variance = variance + static_cast<float>(static_cast<double>(off) * static_cast<double>(off));
    }
    variance = variance / 240.0F;
    float cubes = 0.0F;
    float fourths = 0.0F;
    for (const float value : norm) {
        const auto off = static_cast<double>(value - centre);
        cubes = static_cast<float>(static_cast<double>(cubes) + std::pow(off, 3.0));
        fourths = static_cast<float>(static_cast<double>(fourths) + std::pow(off, 4.0));
    }
    const double deviation = std::pow(static_cast<double>(variance), 0.5);
    const auto skewness = static_cast<float>(static_cast<double>(cubes) / (240.0 * std::pow(deviation, 3.0)));
    const auto kurtosis =
        static_cast<float>(static_cast<double>(fourths) / (240.0 * std::pow(deviation, 4.0)) - 3.0);
    const float shape = rms / (magnitudes / 240.0F);
    return {variance, skewness, kurtosis, shape};
}

float decision(const Model& model, const std::vector<float>& x)
{
    float sum = 0.0F;
    for (std::size_t i = 0; i < model.coefficients.size(); ++i) {
        float distance = 0.0F;
        for (std::size_t k = 0; k < static_cast<std::size_t>(model.dimension); ++k) {
            const auto off = static_cast<double>(model.vectors[i][k] - x[k]);
            distance = static_cast<float>(static_cast<double>(distance) + off * off);
        }
        const float exponent = -model.gamma * distance;
        const auto kernel = static_cast<float>(std::exp(static_cast<double>(exponent)));
        sum = sum + model.coefficients[i] * kernel;
    }
    return sum - model.rho;
}

void Oracle::classify()
{
    ++(decision(m_model, features(frame)) > 0.0F ? votes.suspension : votes.alongSurface);
}

}  // namespace prpdoracle
