// The three tests side by side on one store.
#include <KOVDoaHandle/KOVAudio/kovmultmiccheck.h>

#include <gtest/gtest.h>

#include <cstring>
#include <thread>

#include "arraysignal.h"

using namespace miccheck;

namespace {

bool sameFindings(const MicCheckResult& a, const MicCheckResult& b)
{
    return std::memcmp(a.flags, b.flags, sizeof a.flags) == 0 &&
           std::memcmp(a.values, b.values, sizeof a.values) == 0;
}

TEST(MicCheckThreads, FindTheSameSideBySide)
{
    ArraySignal signal = differentNoise(48'000, 0.1F);
    signal.rows[4] = delayed(signal.rows[0], 7);
    KOVMultMicCheck check;
    check.fillAudio(signal.from(), 48'000);
    const MicCheckResult same = check.checkSame();
    const MicCheckResult levels = check.checkRMS();
    const MicCheckResult lags = check.checkXcorr();

    MicCheckResult found[4];
    std::thread threads[4] = {std::thread([&] { found[0] = check.checkSame(); }),
                              std::thread([&] { found[1] = check.checkRMS(); }),
                              std::thread([&] { found[2] = check.checkXcorr(); }),
                              std::thread([&] { found[3] = check.checkXcorr(); })};
    for (std::thread& thread : threads) {
        thread.join();
    }

    EXPECT_TRUE(sameFindings(same, found[0]));
    EXPECT_TRUE(sameFindings(levels, found[1]));
    EXPECT_TRUE(sameFindings(lags, found[2]));
    EXPECT_TRUE(sameFindings(lags, found[3]));
    EXPECT_EQ(lags.values[4], -7.0F);
}

}  // namespace
