// Discharge analysers that are made, fed, polled and released in a tight loop, several at once.
#include <KOVDoaHandle/api/prpd.h>

#include <gtest/gtest.h>

#include <latch>
#include <thread>
#include <vector>

#include "prpdsignals.h"

namespace {

#if defined(__SANITIZE_THREAD__)
constexpr int rounds = 30;  // the filters take thirty times as long there
#else
constexpr int rounds = 100;
#endif

// Fewer samples than a pattern takes come in a round, but for one in ten, which keeps the loop tight.
void liveOnce(const char* models, int round)
{
    constexpr int blockSize = 4096;
    const int blocks = round % 10 == 0 ? 16 : 3;
    KOVPrpdProcess* const prpd = CreatePRPDHandle(models);
    std::latch begin(2);
    std::thread feeder([&] {
        std::vector<float> block(blockSize, 0.25F);
        begin.arrive_and_wait();
        for (int i = 0; i < blocks; ++i) {
            PRPDFeedAudio(prpd, block.data(), blockSize);
        }
    });
    begin.arrive_and_wait();
    for (int i = 0; i < 5; ++i) {
        PRPDUpdatePdd(prpd);
        PRPDSetPddMode(prpd, i % 2);
        if (i == 3) {
            PRPDReset(prpd);
        }
    }
    feeder.join();

    PRPDReset(prpd);
    EXPECT_FALSE(PRPDUpdatePdd(prpd));
    std::vector<float> block(blockSize, 0.25F);
    for (int i = 0; round % 10 == 0 && i < 16; ++i) {
        PRPDFeedAudio(prpd, block.data(), blockSize);
    }
    EXPECT_EQ(PRPDUpdatePdd(prpd), round % 10 == 0);
    ReleasePRPDHandle(prpd);
}

TEST(PrpdLifetimes, MayPassInATightLoopOnSeveralThreads)
{
    const prpdsignals::ModelFolder models("4 1 1 0 1 1 1 1 1");
    const auto live = [&models] {
        for (int round = 0; round < rounds; ++round) {
            liveOnce(models.path().c_str(), round);
        }
    };

    std::thread other(live);
    live();
    other.join();
}

}  // namespace
