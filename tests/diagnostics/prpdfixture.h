// An analyser with a folder of models, for the tests of what it does.
#ifndef KOVDOA_TESTS_PRPDFIXTURE_H
#define KOVDOA_TESTS_PRPDFIXTURE_H

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

#include <KOVDoaHandle/diagnostics/kovprpdprocess.h>

#include "prpdsignals.h"

namespace prpdfixture {

using prpdsignals::ModelFolder;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

// n samples that swell and fall so many times a mains cycle.
inline std::vector<float> swelling(int timesACycle, int n, int cycleSamples = 1920)
{
    std::vector<float> samples(static_cast<std::size_t>(n));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double angle = 2.0 * std::numbers::pi * timesACycle * static_cast<double>(i) / cycleSamples;
        samples[i] = 0.1F * (1.0F + static_cast<float>(std::cos(angle)));
    }
    return samples;
}

class PrpdFixture : public ::testing::Test
{
protected:
    // The samples as if they had been filtered already.
    void store(std::vector<float> samples)
    {
        process->audioInput(samples.data(), static_cast<int>(samples.size()));
    }
    void store(std::size_t n, float value) { store(std::vector<float>(n, value)); }

    void poll(int times)
    {
        for (int i = 0; i < times; ++i) {
            ASSERT_TRUE(process->updatePdd());
        }
    }

    PRPDResult result() { return process->getPddFrameData(nullptr, 0); }

    void useModel(const std::string& text)
    {
        const ModelFolder models(text);
        process = std::make_unique<KOVPrpdProcess>(models.path().c_str());
    }

    ModelFolder folder;
    std::unique_ptr<KOVPrpdProcess> process = std::make_unique<KOVPrpdProcess>(folder.path().c_str());
};

}  // namespace prpdfixture

#endif
