// One thread feeds, one reads, one controls.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "plainlistening.h"

using namespace listening;

namespace {

constexpr int blockSize = 256;

TEST(ListeningThreads, LoseNoSampleBetweenFeedingAndReading)
{
    constexpr int blocks = 2000;
    // The feeding side waits for the other one long before the backlog is dropped.
    constexpr int furthestAhead = 50'000;
    const Samples signal = noise(std::size_t{blocks} * blockSize, 0.3F, 1);
    const auto monitor = startedMonitor();
    std::atomic<int> read{0};

    std::thread feeding([&] {
        Samples copy = signal;
        for (int block = 0; block < blocks; ++block) {
            while (block * blockSize - read > furthestAhead) {
                std::this_thread::yield();
            }
            monitor->feedSignal(copy.data() + block * blockSize, blockSize);
        }
    });
    std::vector<Sound> readings;
    while (read < blocks * blockSize) {
        readings.push_back(readFrom(*monitor));
        read += 2 * static_cast<int>(readings.back().size());
    }
    feeding.join();

    PlainChain plain(38600.0F);
    auto position = signal.begin();
    for (const Sound& reading : readings) {
        const auto end = position + 2 * std::ssize(reading);
        ASSERT_EQ(plain.read(Samples(position, end)), reading);
        position = end;
    }
    EXPECT_EQ(position, signal.end());
}

TEST(ListeningThreads, SurviveEveryControlWhileTheyFeedAndRead)
{
    const auto monitor = startedMonitor();
    std::atomic<bool> finished{false};
    std::atomic<int> readings{0};
    const auto awaitReading = [&] {
        const int before = readings;
        while (readings == before) {
            std::this_thread::yield();
        }
    };

    std::thread feeding([&] {
        Samples block = noise(blockSize, 0.3F, 2);
        Sound shorts(blockSize, 1000);
        while (!finished) {
            monitor->feedSignal(block.data(), blockSize);
            monitor->feedSignal(block.data(), blockSize, 0.5F);
            monitor->feedSignal(shorts.data(), blockSize);
            monitor->feedSignal(shorts.data(), 0);
        }
    });
    std::thread reading([&] {
        while (!finished) {
            readFrom(*monitor);
            ++readings;
        }
    });
    for (int round = 0; round < 20; ++round) {
        monitor->setVolume(static_cast<float>(round));
        monitor->setChannel(round);
        awaitReading();
        monitor->stop();
        awaitReading();
        monitor->flushBuffer();
        monitor->start();
    }
    monitor->setBaseFrequency(30000.0F);
    awaitReading();
    monitor->stop();
    monitor->setBaseFrequency(25000.0F);
    finished = true;
    feeding.join();
    reading.join();

    const Samples signal = noise(3000, 0.5F, 3);
    monitor->setVolume(0.0F);
    monitor->start();
    feed(*monitor, signal);
    EXPECT_EQ(PlainChain(25000.0F).read(signal), readFrom(*monitor));
    EXPECT_EQ(monitor->channel(), 19);
}

}  // namespace
