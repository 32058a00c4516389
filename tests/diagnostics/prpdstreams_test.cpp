// The analyser against the plain one in prpdoracle.cpp, over long streams.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include <KOVDoaHandle/diagnostics/kovprpdprocess.h>

#include "prpdoracle.h"
#include "prpdsignals.h"

namespace {

// A wide shape (low kurtosis) is called suspension, a narrow one along-surface. With 60 Hz the three cycles
// that are averaged are not in phase, so all shapes are wider.
prpdoracle::Model shapeModel(bool sixtyHertz = false)
{
    if (sixtyHertz) {
        return {4, 0.5F, 0.0F, {1.0F, -1.0F}, {{0.1F, 1.7F, 0.3F, 1.3F}, {0.08F, 2.2F, 2.5F, 1.75F}}};
    }
    return {4, 0.05F, 0.0F, {1.0F, -1.0F}, {{0.1F, 2.0F, 3.0F, 2.0F}, {0.05F, 5.0F, 30.0F, 3.0F}}};
}

std::string textOf(const prpdoracle::Model& model)
{
    std::string text = std::to_string(model.dimension) + ' ' + std::to_string(model.vectors.size()) + '\n' +
                       std::to_string(model.gamma) + '\n' + std::to_string(model.rho) + '\n';
    for (const float coefficient : model.coefficients) {
        text += std::to_string(coefficient) + '\n';
    }
    for (const auto& vector : model.vectors) {
        for (const float element : vector) {
            text += std::to_string(element) + ' ';
        }
        text += '\n';
    }
    return text;
}

// Both analysers side by side, fed with the same samples cut in the same random places.
class Pair
{
public:
    Pair(unsigned seed, const prpdoracle::Model& model)
        : oracle(model), folder(textOf(model)), process(folder.path().c_str()), m_random(seed)
    {
    }

    void switchTo(bool sixtyHertz)
    {
        m_sixtyHertz = sixtyHertz;
        process.setPddMode(sixtyHertz ? PDD_MODE_60HZ : PDD_MODE_50HZ);
    }

    void reset()
    {
        process.resetResult();
        oracle.reset();
    }

    // Feeds that many samples, and compares at every poll that comes by.
    void run(prpdsignals::Stream& stream, int samples)
    {
        std::uniform_int_distribution<int> length(1, 6000);
        while (samples > 0 && !::testing::Test::HasFailure()) {
            const int n = std::min(samples, length(m_random));
            samples -= n;
            std::vector<float> block = stream.next(n);
            oracle.feed(block);
            process.FeedAudio(block.data(), n);
            if (m_random() % 2 == 0) {
                poll();
            }
        }
    }

    void poll()
    {
        const bool expected = oracle.poll(m_sixtyHertz);

        const bool found = process.updatePdd();

        ++polls;
        ASSERT_EQ(found, expected) << "poll " << polls;
        std::vector<float> frame(2400, -1.0F);
        const PRPDResult result = process.getPddFrameData(frame.data(), 2400);
        const std::size_t size = m_sixtyHertz ? 2000 : 2400;
        ASSERT_EQ(std::memcmp(frame.data(), oracle.frame.data(), size * sizeof(float)), 0)
            << "poll " << polls;
        ASSERT_EQ(std::memcmp(&result, &oracle.result, sizeof result), 0)
            << "poll " << polls << ": F1 " << result.F1 << " / " << oracle.result.F1 << ", corona "
            << result.coronaPercent << " / " << oracle.result.coronaPercent << ", suspension "
            << result.suspensionPercent << " / " << oracle.result.suspensionPercent;
    }

    prpdoracle::Oracle oracle;
    prpdsignals::ModelFolder folder;
    KOVPrpdProcess process;
    int polls = 0;

private:
    std::mt19937 m_random;
    bool m_sixtyHertz = false;
};

class PrpdStreams : public ::testing::TestWithParam<int>
{
};

constexpr int second = 96000;

TEST_P(PrpdStreams, GiveTheSameBitsAsThePlainAnalyserHoweverTheyAreCut)
{
    Pair pair(11, shapeModel(GetParam() == 60));
    pair.switchTo(GetParam() == 60);
    prpdsignals::Stream stream(GetParam(), 5);

    pair.run(stream, 2 * second);  // noise
    stream.phases = {0.3};
    stream.drift = 2e-4;
    pair.run(stream, 4 * second);
    stream.phases = {0.2, 0.7};
    pair.run(stream, 3 * second);
    stream.scatter = 0.08;
    stream.drift = -3e-4;
    pair.run(stream, 5 * second);
    stream.peak = 2.0F;
    stream.noise = 0.02F;
    stream.phases = {0.05, 0.55, 0.6};
    pair.run(stream, 3 * second);

    EXPECT_GT(pair.polls, 200);
    EXPECT_GT(pair.oracle.votes.noise, 10);
    EXPECT_GT(pair.oracle.votes.corona, 20);
    EXPECT_GT(pair.oracle.votes.alongSurface, 5);
    EXPECT_GT(pair.oracle.votes.suspension, 5);
    EXPECT_GT(pair.oracle.searches, 20);
    EXPECT_EQ(pair.oracle.result.peak, 1.0F) << "the last part was meant to be clipped";
}

INSTANTIATE_TEST_SUITE_P(Mains, PrpdStreams, ::testing::Values(50, 60),
                         [](const auto& mains) { return std::to_string(mains.param) + "Hz"; });

TEST(PrpdStreamsInUse, GiveTheSameBitsAcrossResetsAndChangesOfTheMains)
{
    Pair pair(23, shapeModel());
    prpdsignals::Stream stream(50, 6);
    stream.phases = {0.9};
    std::mt19937 random(77);

    for (int part = 0; part < 24; ++part) {
        stream.phases = {static_cast<double>(random() % 100) / 100.0};
        stream.scatter = part % 3 == 0 ? 0.2 : 0.01;
        pair.run(stream, static_cast<int>(random() % (2 * second)));
        if (part % 4 == 3) {
            pair.reset();
            pair.poll();
        } else {
            pair.switchTo(random() % 2 == 0);
        }
    }

    EXPECT_GT(pair.polls, 200);
}

// The transform of both analysers is the same package's, so its lines are checked against the definition as
// well.
TEST(PrpdSpectrumLines, AreTheAmplitudesOfTheDiscreteFourierTransform)
{
    prpdsignals::Stream stream(50, 8);
    stream.phases = {0.1, 0.55};
    const prpdsignals::ModelFolder folder;
    KOVPrpdProcess process(folder.path().c_str());
    std::vector<float> samples = stream.next(2 * second);
    process.FeedAudio(samples.data(), static_cast<int>(samples.size()));
    std::vector<float> frame(2400);

    ASSERT_TRUE(process.updatePdd());

    const PRPDResult result = process.getPddFrameData(frame.data(), 2400);
    const auto line = [&frame](int bin) {
        double re = 0.0;
        double im = 0.0;
        for (int i = 0; i < 2400; ++i) {
            const double angle = 2.0 * std::numbers::pi * bin * i / 2400.0;
            re += static_cast<double>(frame[static_cast<std::size_t>(i)]) * std::cos(angle);
            im -= static_cast<double>(frame[static_cast<std::size_t>(i)]) * std::sin(angle);
        }
        return std::hypot(re, im) / (8.0 * 2400.0);
    };
    EXPECT_GT(result.F2, 0.0F);
    EXPECT_NEAR(result.F1, line(10), 1e-5 * line(20));
    EXPECT_NEAR(result.F2, line(20), 1e-5 * line(20));
}

}  // namespace
