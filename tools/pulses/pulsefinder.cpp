#include "tools/pulses/pulsefinder.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace kovtools {

namespace {

std::vector<float*> rowsOf(std::vector<std::vector<float>>& matrix)
{
    std::vector<float*> rows;
    for (std::vector<float>& row : matrix) {
        rows.push_back(row.data());
    }
    return rows;
}

std::vector<float> interleaved(const std::vector<std::vector<float>>& rows)
{
    std::vector<float> samples;
    samples.reserve(rows.size() * rows.front().size());
    for (std::size_t i = 0; i < rows.front().size(); ++i) {
        for (const std::vector<float>& row : rows) {
            samples.push_back(row[i]);
        }
    }
    return samples;
}

float largestMagnitude(const std::vector<float>& samples)
{
    float largest = 0.0F;
    for (const float sample : samples) {
        largest = std::max(largest, std::abs(sample));
    }
    return largest;
}

}  // namespace

PulseFinder::PulseFinder(const PulseOptions& options, Report report)
    : m_options(options),
      m_report(std::move(report)),
      m_detector(options.sampleRate, options.segment, options.channels),
      m_block(static_cast<std::size_t>(options.channels)),
      m_segment(static_cast<std::size_t>(options.channels),
                std::vector<float>(static_cast<std::size_t>(options.segment), 0.0F))
{
}

void PulseFinder::feed(const std::vector<float>& block)
{
    const std::size_t channels = m_block.size();
    const std::size_t samples = block.size() / channels;
    for (std::size_t ch = 0; ch < channels; ++ch) {
        m_block[ch].resize(samples);
        for (std::size_t i = 0; i < samples; ++i) {
            m_block[ch][i] = block[i * channels + ch];
        }
    }
    for (const float sample : m_block[static_cast<std::size_t>(m_options.channel)]) {
        m_squares += static_cast<double>(sample) * static_cast<double>(sample);
    }
    const auto count = static_cast<int>(samples);
    m_detector.FeedSignal(rowsOf(m_block).data(), count, m_options.channel);
    m_fed += count;
    m_buffered += count;
    m_new += count;
    if (m_buffered == bufferSamples) {
        search();
    }
}

void PulseFinder::finish()
{
    if (m_new > 0) {
        search();
    }
}

void PulseFinder::search()
{
    PulseBuffer buffer{m_fed - m_buffered, m_buffered, 0, 0.0F,
                       static_cast<float>(std::sqrt(m_squares / m_new))};
    std::vector<float> segment;
    if (m_detector.GetPulse(rowsOf(m_segment).data(), buffer.count)) {
        buffer.peak = largestMagnitude(m_segment[static_cast<std::size_t>(m_options.channel)]);
        segment = interleaved(m_segment);
    }
    m_report(buffer, segment);
    // The detector keeps a segment's worth, and nothing of a buffer that is no longer than that.
    m_buffered = m_buffered > m_options.segment ? m_options.segment : 0;
    m_new = 0;
    m_squares = 0.0;
}

}  // namespace kovtools
