#include "tools/arrayaudio/placementcheck.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <set>

#include "tests/tools/arraysamples.h"
#include "tests/tools/program.h"
#include "tools/arrayaudio/arrayrecording.h"
#include "tools/scene/propagation.h"

namespace {

using kovtools::ArrayRecording;
using kovtools::ArraySimulationOptions;
using kovtools::checkPlacement;
using kovtools::MicrophonePair;
using kovtools::PlacementCheck;
using kovtools::StandingSource;
using kovtools::tests::defaultArrayScene;
using kovtools::tests::Sandbox;
using kovtools::tests::writeArray;

constexpr int samples = 66000;  // a little more than the check looks at

PlacementCheck check(const ArraySimulationOptions& options, int length = samples)
{
    const Sandbox sandbox;
    writeArray(sandbox / "a", options, length);
    ArrayRecording recording(sandbox / "a", static_cast<int>(options.array.size()));
    return checkPlacement(recording, options.array);
}

std::set<int> failed(const PlacementCheck& check)
{
    std::set<int> microphones;
    for (std::size_t m = 0; m < check.passed.size(); ++m) {
        if (!check.passed[m]) {
            microphones.insert(static_cast<int>(m));
        }
    }
    return microphones;
}

// The difference of two microphones' paths to the default scene's strongest source, m.
double pathDifference(const ArraySimulationOptions& options, int first, int second)
{
    const StandingSource& source = options.sources.front();
    const auto path = [&](int m) {
        return kovtools::speedOfSound * kovtools::advance(options.array[static_cast<std::size_t>(m)],
                                                          source.direction(), source.distance);
    };
    return std::abs(path(first) - path(second));
}

class RandomSwaps : public ::testing::TestWithParam<unsigned>
{
};

TEST_P(RandomSwaps, AreFoundExactly)
{
    ArraySimulationOptions options = defaultArrayScene(GetParam());
    std::mt19937 random(GetParam());
    std::set<int> swapped;
    while (swapped.size() < 6) {
        const int first = static_cast<int>(random() % 208);
        const int second = static_cast<int>(random() % 208);
        // Closer ones sound alike from there; alikePairs tells how many such pairs there are.
        if (first != second && swapped.count(first) + swapped.count(second) == 0 &&
            pathDifference(options, first, second) > 1e-3) {
            options.broken.swaps.push_back({first, second});
            swapped.insert({first, second});
        }
    }

    const PlacementCheck result = check(options);

    ASSERT_TRUE(result.possible) << result.reason;
    EXPECT_EQ(failed(result), swapped);
    EXPECT_LT(result.alikePairs, 0.1F);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomSwaps, ::testing::Range(1U, 6U));

TEST(PlacementCheck, FindsNothingWrongWithAWholeArray)
{
    const PlacementCheck result = check(defaultArrayScene(11));

    ASSERT_TRUE(result.possible) << result.reason;
    EXPECT_EQ(failed(result), std::set<int>{});
    EXPECT_EQ(result.agreement.size(), 208U);
    for (const float agreement : result.agreement) {
        EXPECT_GT(agreement, 0.98F);
    }
}

TEST(PlacementCheck, LeavesDeadMicrophonesToTheLevelTest)
{
    ArraySimulationOptions options = defaultArrayScene(12);
    options.broken.dead = {17, 101};

    const PlacementCheck result = check(options);

    ASSERT_TRUE(result.possible) << result.reason;
    EXPECT_EQ(failed(result), std::set<int>{});
    EXPECT_TRUE(std::isnan(result.agreement[17]));
    EXPECT_TRUE(std::isnan(result.agreement[101]));
}

TEST(PlacementCheck, FindsTheMicrophoneThatCarriesAnothersSignalButNotThatOne)
{
    ArraySimulationOptions options = defaultArrayScene(13);
    options.broken.duplicates = {{30, 150}};

    const PlacementCheck result = check(options);

    ASSERT_TRUE(result.possible) << result.reason;
    EXPECT_EQ(failed(result), std::set<int>{30});
}

TEST(PlacementCheck, WorksForASourceThatIsNear)
{
    ArraySimulationOptions options = defaultArrayScene(14);
    options.sources.resize(1);
    options.sources[0].distance = 0.6;
    options.broken.swaps = {{3, 77}};

    const PlacementCheck result = check(options);

    ASSERT_TRUE(result.possible) << result.reason;
    EXPECT_EQ(failed(result), (std::set<int>{3, 77}));
}

TEST(PlacementCheck, CannotTellWithoutASource)
{
    ArraySimulationOptions options = defaultArrayScene(15);
    options.sources.clear();

    const PlacementCheck result = check(options);

    EXPECT_FALSE(result.possible);
    EXPECT_EQ(result.reason, "no source stands out clearly enough");
    EXPECT_TRUE(result.passed.empty());
}

TEST(PlacementCheck, CannotTellWhenTheSourceIsStraightAhead)
{
    ArraySimulationOptions options = defaultArrayScene(16);
    options.sources.resize(1);
    options.sources[0].azimuth = 0.0;
    options.sources[0].elevation = 0.0;
    options.sources[0].distance = 20.0;

    const PlacementCheck result = check(options);

    EXPECT_FALSE(result.possible);
    EXPECT_NE(result.reason.find("straight ahead"), std::string::npos) << result.reason;
}

TEST(PlacementCheck, CannotTellFromSilenceOrFromAFewSamples)
{
    ArraySimulationOptions options = defaultArrayScene(17);
    EXPECT_EQ(check(options, 8191).reason, "the recording is too short");
    options.sources.clear();
    options.noise = 0.0;
    EXPECT_EQ(check(options).reason, "the recording is silent");
}

}  // namespace
