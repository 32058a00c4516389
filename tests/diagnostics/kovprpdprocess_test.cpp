// The analyser of partial discharges from outside: what it takes, when it has a pattern, and what its levels
// are.
#include <KOVDoaHandle/diagnostics/kovprpdprocess.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "prpdfixture.h"
#include "tests/support/bits.h"

// Counts what this program and the libraries in it allocate.
static std::atomic<long> allocations{0};

void* operator new(std::size_t size)
{
    ++allocations;
    void* const memory = std::malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace {

using namespace prpdfixture;
using testsupport::sameBits;

class KOVPrpdProcessTest : public PrpdFixture
{
};

TEST_F(KOVPrpdProcessTest, HasTenPagesOfOneMainsCycleEach)
{
    EXPECT_EQ(process->getPddMode(), PDD_MODE_50HZ);
    EXPECT_EQ(process->pageLength(), 240);
    EXPECT_EQ(process->pageNumber(), 10);

    process->setPddMode(PDD_MODE_60HZ);

    EXPECT_EQ(process->getPddMode(), PDD_MODE_60HZ);
    EXPECT_EQ(process->pageLength(), 200);
    EXPECT_EQ(process->pageNumber(), 10);
}

TEST_F(KOVPrpdProcessTest, KeepsAnyModeAndTakesUnknownOnesAsFiftyHertz)
{
    process->setPddMode(static_cast<PddMode>(-77));

    EXPECT_EQ(process->getPddMode(), static_cast<PddMode>(-77));
    EXPECT_EQ(process->pageLength(), 240);
    store(60543, 0.1F);
    EXPECT_FALSE(process->updatePdd());
    store(1, 0.1F);
    EXPECT_TRUE(process->updatePdd());
}

struct FirstPattern
{
    PddMode mode;
    std::size_t samples;
    const char* name;
};

class PrpdFirstPattern : public KOVPrpdProcessTest, public ::testing::WithParamInterface<FirstPattern>
{
};

TEST_P(PrpdFirstPattern, NeedsAWholeSpanOfSamples)
{
    process->setPddMode(GetParam().mode);
    std::vector<float> frame(2400, -1.0F);
    PddType type = static_cast<PddType>(5);

    store(GetParam().samples - 1, 0.1F);
    EXPECT_FALSE(process->getPdd(frame.data(), type));
    EXPECT_EQ(type, static_cast<PddType>(5));
    EXPECT_EQ(frame[0], -1.0F);

    store(1, 0.1F);
    EXPECT_TRUE(process->getPdd(frame.data(), type));
    EXPECT_EQ(type, PDD_TYPE_NONE);
    EXPECT_FLOAT_EQ(frame[1000], 3.0F * 7.0F * 0.1F);
}

TEST_P(PrpdFirstPattern, NeedsAWholeSpanAgainAfterAReset)
{
    process->setPddMode(GetParam().mode);
    store(GetParam().samples + 100000, 0.1F);
    ASSERT_TRUE(process->updatePdd());

    process->resetResult();

    EXPECT_FALSE(process->updatePdd());
    store(GetParam().samples - 1, 0.1F);
    EXPECT_FALSE(process->updatePdd());
    store(1, 0.1F);
    EXPECT_TRUE(process->updatePdd());
}

INSTANTIATE_TEST_SUITE_P(Mains, PrpdFirstPattern,
                         ::testing::Values(FirstPattern{PDD_MODE_50HZ, 60544, "50Hz"},
                                           FirstPattern{PDD_MODE_60HZ, 50624, "60Hz"}),
                         [](const auto& first) { return first.param.name; });

// 60544 samples end 2944 beyond a multiple of 5760, so the span begins 2945 samples before the stream.
TEST_F(KOVPrpdProcessTest, ReadsSilenceBeforeTheStream)
{
    store(60544, 0.5F);

    ASSERT_TRUE(process->updatePdd());

    EXPECT_NEAR(result().RMS, 0.5 * std::sqrt((4864.0 - 2945.0) / 4864.0), 1e-6);
}

TEST_F(KOVPrpdProcessTest, BuildsAPatternOfSilenceWhenAskedForOneWithoutSamples)
{
    std::vector<float> frame(2400, -1.0F);
    PddType type = static_cast<PddType>(5);

    process->processPdd50Hz(frame.data(), type);

    EXPECT_EQ(frame, std::vector<float>(2400, 0.0F));
    EXPECT_EQ(type, PDD_TYPE_NONE);

    frame.assign(2400, -1.0F);
    process->processPdd60Hz(frame.data(), type);

    EXPECT_EQ(frame[1999], 0.0F);
    EXPECT_EQ(frame[2000], -1.0F);
}

// With 115200 samples = 20 x 5760 the last sample of the span has index 115198 and its first 54655; level and
// peak are taken over 4864 samples from there.
TEST_F(KOVPrpdProcessTest, EndsItsSpanWithTheSecondSampleBeforeAMultipleOfTheAlignment)
{
    const auto peakWithSpikeAt = [this](std::size_t index, std::size_t total) {
        process->resetResult();
        std::vector<float> samples(total, 0.01F);
        samples[index] = 0.5F;
        store(samples);
        process->updatePdd();
        return result().peak;
    };

    EXPECT_EQ(peakWithSpikeAt(54654, 115200), 0.01F);
    EXPECT_EQ(peakWithSpikeAt(54655, 115200), 0.5F);
    EXPECT_EQ(peakWithSpikeAt(54655 + 4863, 115200), 0.5F);
    EXPECT_EQ(peakWithSpikeAt(54655 + 4864, 115200), 0.01F);
    EXPECT_EQ(peakWithSpikeAt(54655, 115200 + 5759), 0.5F);
    EXPECT_EQ(peakWithSpikeAt(54655, 115200 + 5760), 0.01F);

    // 60 Hz: 110400 = 23 x 4800; the span has 50624 samples, 4224 of them measured.
    process->setPddMode(PDD_MODE_60HZ);
    EXPECT_EQ(peakWithSpikeAt(59774, 110400), 0.01F);
    EXPECT_EQ(peakWithSpikeAt(59775, 110400), 0.5F);
    EXPECT_EQ(peakWithSpikeAt(59775 + 4223, 110400), 0.5F);
    EXPECT_EQ(peakWithSpikeAt(59775 + 4224, 110400), 0.01F);
}

TEST_F(KOVPrpdProcessTest, LetsTheFloorRiseAtOnceAndFallByHalves)
{
    store(200000, 0.125F);
    poll(1);
    EXPECT_EQ(result().RMS, 0.125F);

    store(200000, 0.5F);
    poll(1);
    EXPECT_EQ(result().RMS, 0.5F);

    store(200000, 0.25F);
    poll(1);
    EXPECT_EQ(result().RMS, 0.375F);
    poll(1);
    EXPECT_EQ(result().RMS, 0.3125F);
}

TEST_F(KOVPrpdProcessTest, ReplacesAFloorThatIsNoNumberAtTheNextPoll)
{
    for (const float bad : {notANumber, infinity}) {
        store(200000, bad);
        poll(1);
        EXPECT_FALSE(std::isfinite(result().RMS));

        store(200000, 0.25F);
        poll(1);
        EXPECT_EQ(result().RMS, 0.25F);
    }
}

TEST_F(KOVPrpdProcessTest, ClipsThePeakAtOne)
{
    store(200000, -3.0F);

    poll(1);

    EXPECT_EQ(result().peak, 1.0F);
    EXPECT_EQ(result().RMS, 3.0F);
}

float amplitudeAt(double decibels)
{
    return static_cast<float>(std::pow(10.0, (decibels - 120.0) / 20.0));
}

struct PeakBand
{
    double peakDb;
    double limitDb;
    const char* name;
};

class PrpdPeakBands : public KOVPrpdProcessTest, public ::testing::WithParamInterface<PeakBand>
{
};

TEST_P(PrpdPeakBands, AcceptAPeakOnlyAboveTheirLimit)
{
    const float peak = amplitudeAt(GetParam().peakDb);

    EXPECT_FALSE(process->checkPeak(peak, amplitudeAt(GetParam().peakDb - GetParam().limitDb + 0.1)));
    EXPECT_FALSE(process->checkPeak(peak, amplitudeAt(GetParam().peakDb - GetParam().limitDb)));
    EXPECT_TRUE(process->checkPeak(peak, amplitudeAt(GetParam().peakDb - GetParam().limitDb - 0.1)));
}

INSTANTIATE_TEST_SUITE_P(Bands, PrpdPeakBands,
                         ::testing::Values(PeakBand{20.0, 15.0, "Far"}, PeakBand{41.0, 15.0, "Below42"},
                                           PeakBand{42.0, 13.5, "At42"}, PeakBand{44.0, 13.5, "Below45"},
                                           PeakBand{46.0, 12.0, "Below48"}, PeakBand{49.0, 10.5, "Below51"},
                                           PeakBand{52.0, 9.0, "Below54"}, PeakBand{60.0, 7.5, "Above54"},
                                           PeakBand{120.0, 7.5, "FullScale"}),
                         [](const auto& band) { return band.param.name; });

struct PeakLimit
{
    float beginDb;  // of a band
    double limitBelowDb;
    double limitDb;
};

class PrpdPeakLimits : public KOVPrpdProcessTest, public ::testing::WithParamInterface<PeakLimit>
{
};

// A floor between the limits of both bands tells them apart.
TEST_P(PrpdPeakLimits, BelongToTheBandThatBeginsThere)
{
    const PeakLimit limit = GetParam();
    const auto level = [](float amplitude) { return 20.0F * std::log10(amplitude) + 120.0F; };
    float peak = amplitudeAt(static_cast<double>(limit.beginDb) - 0.001);
    while (level(peak) < limit.beginDb) {
        peak = std::nextafter(peak, 1.0F);
    }
    ASSERT_EQ(level(peak), limit.beginDb);
    const float floor =
        amplitudeAt(static_cast<double>(limit.beginDb) - (limit.limitBelowDb + limit.limitDb) / 2.0);

    float below = peak;
    while (level(below) == limit.beginDb) {
        below = std::nextafter(below, 0.0F);
    }
    EXPECT_FALSE(process->checkPeak(below, floor));
    EXPECT_TRUE(process->checkPeak(peak, floor));
}

INSTANTIATE_TEST_SUITE_P(Bands, PrpdPeakLimits,
                         ::testing::Values(PeakLimit{42.0F, 15.0, 13.5}, PeakLimit{45.0F, 13.5, 12.0},
                                           PeakLimit{48.0F, 12.0, 10.5}, PeakLimit{51.0F, 10.5, 9.0},
                                           PeakLimit{54.0F, 9.0, 7.5}),
                         [](const auto& limit) {
                             return std::to_string(static_cast<int>(limit.param.beginDb)) + "dB";
                         });

TEST_F(KOVPrpdProcessTest, AcceptsNoPeakThatIsNoneAndAnyAboveAFloorOfZero)
{
    EXPECT_FALSE(process->checkPeak(0.0F, 0.001F));
    EXPECT_FALSE(process->checkPeak(0.0F, 0.0F));
    EXPECT_FALSE(process->checkPeak(notANumber, 0.001F));
    EXPECT_FALSE(process->checkPeak(0.5F, notANumber));
    EXPECT_TRUE(process->checkPeak(1e-6F, 0.0F));
}

TEST_F(KOVPrpdProcessTest, AddsTheLastSevenOfTheEightSamplesOfABin)
{
    std::vector<float> samples{100, 1, 2, 3, 4, 5, 6, 7, 200, -1, 0, 0, 0, 0, 0, -2};
    std::vector<float> bins(2);

    process->getPddData(samples.data(), bins.data(), 2);

    EXPECT_EQ(bins, (std::vector<float>{28, -3}));
}

TEST_F(KOVPrpdProcessTest, GivesThePatternOnlyWhereThereIsRoomForAllOfIt)
{
    process->setPddMode(PDD_MODE_60HZ);
    store(swelling(1, 200000, 1600));
    poll(1);
    std::vector<float> frame(2001, -1.0F);

    const PRPDResult refused = process->getPddFrameData(frame.data(), 1999);
    EXPECT_EQ(frame, std::vector<float>(2001, -1.0F));
    EXPECT_GT(refused.F1, 0.0F);

    const PRPDResult given = process->getPddFrameData(frame.data(), 2000);
    EXPECT_TRUE(sameBits(refused.F1, given.F1));
    EXPECT_GT(*std::min_element(frame.begin(), frame.begin() + 2000), -1.0F);
    EXPECT_GT(*std::max_element(frame.begin(), frame.begin() + 2000), 0.0F);
    EXPECT_EQ(frame[2000], -1.0F);

    EXPECT_TRUE(sameBits(process->getPddFrameData(nullptr, 2000).F1, given.F1));
}

TEST_F(KOVPrpdProcessTest, NeedsRoomForTheLongerPatternOfFiftyHertz)
{
    store(swelling(1, 200000));
    poll(1);
    std::vector<float> frame(2401, -1.0F);

    process->getPddFrameData(frame.data(), 2399);
    EXPECT_EQ(frame, std::vector<float>(2401, -1.0F));

    process->getPddFrameData(frame.data(), 2400);
    EXPECT_GT(*std::min_element(frame.begin(), frame.begin() + 2400), -1.0F);
    EXPECT_EQ(frame[2400], -1.0F);
}

TEST_F(KOVPrpdProcessTest, HasAPatternOfZerosBeforeTheFirstPoll)
{
    std::vector<float> frame(2400, -1.0F);

    const PRPDResult empty = process->getPddFrameData(frame.data(), 2400);

    EXPECT_EQ(frame, std::vector<float>(2400, 0.0F));
    EXPECT_EQ(empty.F1, 0.0F);
    EXPECT_EQ(empty.coronaType, 1);
    EXPECT_EQ(empty.alongSurfaceType, 2);
    EXPECT_EQ(empty.suspensionType, 3);
}

TEST_F(KOVPrpdProcessTest, StartsItsFiltersAnewWhenReset)
{
    std::vector<float> samples = prpdsignals::Stream(50, 4).next(70000);
    process->FeedAudio(samples.data(), 70000);
    poll(1);
    const float floor = result().RMS;

    std::vector<float> loud(100, 1e6F);
    process->FeedAudio(loud.data(), 100);
    process->resetResult();
    process->FeedAudio(samples.data(), 70000);
    poll(1);

    EXPECT_TRUE(sameBits(result().RMS, floor));
}

TEST_F(KOVPrpdProcessTest, IgnoresBlocksThatAreNone)
{
    std::vector<float> samples(60544, 0.1F);

    process->FeedAudio(nullptr, 60544);
    process->FeedAudio(samples.data(), 0);
    process->FeedAudio(samples.data(), -60544);
    process->audioInput(nullptr, 60544);
    process->audioInput(samples.data(), -1);

    EXPECT_FALSE(process->updatePdd());
}

TEST_F(KOVPrpdProcessTest, TakesBlocksLongerThanItsMemory)
{
    std::vector<float> samples(1200000, 1.0F);
    const std::vector<float> tail = swelling(1, 480000);
    std::copy(tail.begin(), tail.end(), samples.end() - 480000);

    store(samples);
    poll(26);

    EXPECT_EQ(result().coronaPercent, 100.0F);
    EXPECT_LE(result().peak, 0.2F);
}

TEST_F(KOVPrpdProcessTest, TakesSingleSamples)
{
    std::vector<float> samples = prpdsignals::Stream(50, 9).next(61000);
    KOVPrpdProcess whole(folder.path().c_str());
    whole.FeedAudio(samples.data(), 61000);
    ASSERT_TRUE(whole.updatePdd());

    for (float& sample : samples) {
        process->FeedAudio(&sample, 1);
    }
    poll(1);

    EXPECT_TRUE(sameBits(result().RMS, whole.getPddFrameData(nullptr, 0).RMS));
    EXPECT_TRUE(sameBits(result().F1, whole.getPddFrameData(nullptr, 0).F1));
}

TEST_F(KOVPrpdProcessTest, AllocatesNothingForBlocksOfOrdinarySizeAndPolls)
{
    useModel("4 1 1 0 1 1 1 1 1");
    std::vector<float> samples = swelling(2, 8192);
    for (int i = 0; i < 20; ++i) {
        store(samples);
    }
    poll(30);  // to beyond the first verdict
    const long before = allocations;

    for (int i = 0; i < 100; ++i) {
        process->FeedAudio(samples.data(), 1024);
        process->FeedAudio(samples.data(), 8192);
        process->audioInput(samples.data(), 8192);
        poll(1);
    }

    EXPECT_EQ(allocations - before, 0);
}

}  // namespace
