// Feeding and retrieving pulses from two threads.
#include <KOVDoaHandle/diagnostics/kovplusedetection.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

#include "pulsefixture.h"

namespace {

using namespace pulsefixture;

TEST(PulseThreads, RetrieveWholeSegmentsWhileAnotherFeeds)
{
    constexpr int length = 100;
    KOVPluseDetection detector(96000, length, 2);
    std::atomic<bool> stop{false};
    // In each block a burst, whose place the second channel tells: it is 0 at the peak.
    std::thread feeder([&] {
        Samples detected(1000, 0.0F);
        addBurst(detected, 500, 1.0F);
        std::vector<Samples> block{detected, counting(-500, 1000)};
        std::vector<float*> rows = pointers(block);
        while (!stop) {
            detector.FeedSignal(rows.data(), 1000, 0);
            std::this_thread::yield();
        }
    });

    for (int pulses = 0; pulses < 60;) {
        const Pulse pulse = getPulse(detector, 2, length);
        if (pulse.found) {
            ++pulses;
            ASSERT_EQ(pulse.segments[1], counting(-75, length));
        }
        detector.setPulseChannel(pulses);
        if (pulses % 10 == 0) {
            detector.FlushSignal();
            detector.FlushPulse();
        }
    }
    stop = true;
    feeder.join();

    EXPECT_EQ(detector.pulseChannel(), 60);
}

}  // namespace
