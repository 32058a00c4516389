// Feeding, polling, reading and resetting one analyser from several threads. What matters besides the
// assertions is what ThreadSanitizer says.
#include <KOVDoaHandle/api/prpd.h>
#include <KOVDoaHandle/diagnostics/kovprpdprocess.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <thread>
#include <vector>

#include "prpdsignals.h"

namespace {

// Blocks of a signal at 35 kHz that swells and falls once in a mains cycle; 1920 samples, so they can be
// repeated.
std::vector<float> coronaBlock()
{
    std::vector<float> samples(1920);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double time = static_cast<double>(i);
        const double level = 0.1 * (1.0 + std::cos(2.0 * std::numbers::pi * time / 1920.0));
        samples[i] = static_cast<float>(level * std::sin(2.0 * std::numbers::pi * 35.0 * time / 96.0));
    }
    return samples;
}

TEST(PrpdThreads, AgreeOnTheVerdictWhileOneFeedsAndOnePolls)
{
    const prpdsignals::ModelFolder models("4 1 1 0 1 1 1 1 1");
    KOVPrpdProcess process(models.path().c_str());
    std::atomic<bool> stop{false};
    std::thread feeder([&] {
        std::vector<float> block = coronaBlock();
        while (!stop) {
            process.FeedAudio(block.data(), static_cast<int>(block.size()));
        }
    });

    int patterns = 0;
    while (patterns < 100) {
        patterns += process.updatePdd() ? 1 : 0;
    }
    stop = true;
    feeder.join();

    const PRPDResult result = process.getPddFrameData(nullptr, 0);
    EXPECT_GT(result.coronaPercent, 90.0F);
    EXPECT_LE(result.peak, 0.25F);
}

TEST(PrpdThreads, MayResetReadAndChangeTheMainsWhileOthersFeedAndPoll)
{
    const prpdsignals::ModelFolder models;
    KOVPrpdProcess process(models.path().c_str());
    std::atomic<bool> stop{false};
    std::thread feeder([&] {
        std::vector<float> block = coronaBlock();
        while (!stop) {
            process.FeedAudio(block.data(), static_cast<int>(block.size()));
            process.audioInput(block.data(), static_cast<int>(block.size()));
            std::this_thread::yield();
        }
    });
    std::thread poller([&] {
        while (!stop) {
            process.updatePdd();
            process.calculateFeatures();
            process.checkPddType();
        }
    });

    std::vector<float> frame(2400);
    for (int i = 0; i < 100; ++i) {
        process.setPddMode(i % 2 == 0 ? PDD_MODE_60HZ : PDD_MODE_50HZ);
        process.getPddFrameData(frame.data(), 2400);
        EXPECT_EQ(process.getPddMode(), i % 2 == 0 ? PDD_MODE_60HZ : PDD_MODE_50HZ);
        if (i % 10 == 0) {
            process.resetResult();
        }
        std::this_thread::yield();
    }
    stop = true;
    feeder.join();
    poller.join();

    process.resetResult();
    EXPECT_EQ(process.getPddFrameData(nullptr, 0).peak, 0.0F);
    EXPECT_FALSE(process.updatePdd());
}

TEST(PrpdThreads, SeeWholeValuesInTheSharedRecord)
{
    const prpdsignals::ModelFolder models;
    KOVPrpdProcess silent(models.path().c_str());
    KOVPrpdProcess loud(models.path().c_str());
    std::vector<float> samples(100000, 0.5F);
    loud.audioInput(samples.data(), 100000);
    loud.updatePdd();
    std::thread other([&] {
        for (int i = 0; i < 2000; ++i) {
            PRPDFrameData(&silent, nullptr, 0);
        }
    });

    for (int i = 0; i < 2000; ++i) {
        const float peak = PRPDResultGetPeak(PRPDFrameData(&loud, nullptr, 0));
        ASSERT_TRUE(peak == 0.5F || peak == 0.0F) << peak;
    }
    other.join();
}

}  // namespace
