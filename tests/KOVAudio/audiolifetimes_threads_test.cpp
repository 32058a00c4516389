// Sources, readers and monitors that are made, used by several threads and destroyed in tight loops.
#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <latch>
#include <memory>
#include <semaphore>
#include <thread>
#include <vector>

#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>
#include <KOVDoaHandle/KOVAudio/kovhwmultaudio.h>
#include <KOVDoaHandle/KOVAudio/kovsuperheterodyne.h>

#include "streamtesting.h"
#include "wavsets.h"

namespace {

using StreamTesting::makeBlock;
using StreamTesting::Messages;
using StreamTesting::sampleOf;
using StreamTesting::WavFolder;

TEST(SourceLifetimes, EndWithEveryBlockDeliveredOrDroppedAndEveryReaderReleased)
{
    constexpr int rounds = 300;
    constexpr int blocksEach = 20;
    const Messages messages;
    for (int round = 0; round < rounds; ++round) {
        KOVAudioSource source(QStringLiteral("short"), 96000, 2);
        std::latch begin(4);
        std::atomic<bool> isDone{false};
        std::atomic<int> delivered{0};
        std::atomic<int> reading{2};
        const auto produce = [&] {
            begin.arrive_and_wait();
            for (int i = 0; i < blocksEach; ++i) {
                source.appendData(makeBlock(static_cast<float>(i)));
            }
        };
        const auto consume = [&] {
            begin.arrive_and_wait();
            while (!isDone) {
                delivered += source.readData().isValid() ? 1 : 0;
            }
            --reading;
        };
        std::thread producers[] = {std::thread(produce), std::thread(produce)};
        std::thread consumers[] = {std::thread(consume), std::thread(consume)};
        if (round % 3 == 0) {
            source.clearData();
        }
        for (std::thread& producer : producers) {
            producer.join();
        }
        isDone = true;
        while (reading > 0) {
            source.onDataReady();
            std::this_thread::yield();
        }
        for (std::thread& consumer : consumers) {
            consumer.join();
        }
        ASSERT_LE(delivered, 2 * blocksEach);
    }
    EXPECT_EQ(messages.count(QtWarningMsg, QStringLiteral("KOVAudioSource::readData timeout")), 0);
}

// Frees the thread objects of ended workers, as the event loop of a host does.
void deleteEndedThreads()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

TEST(ReaderLifetimes, MayPassInATightLoopWithConsumersThatRead)
{
    constexpr int rounds = 150;
    const Messages messages;
    const WavFolder folder;
    folder.writeSet(1);
    int blocks = 0;
    for (int round = 0; round < rounds; ++round) {
        KOVHwMultAudio reader(8);
        ASSERT_TRUE(reader.init(folder.path()));
        const std::unique_ptr<KOVAudioSource> source(
            dynamic_cast<KOVAudioSource*>(reader.createReaderSource(QStringLiteral("short"))));
        std::binary_semaphore hasRead{0};
        std::thread consumer([&] {
            QVariant read = source->readData();
            while (!read.isValid()) {
                read = source->readData();
            }
            EXPECT_EQ(read.value<KOVAudioBuffer>().data(7)[1023], sampleOf(7, 1023));
            ++blocks;
            hasRead.release();
        });
        reader.start();
        // Wakes are lost until the worker waits for them. Rarer and rarer, because of more than 60 blocks the first would
        // be overwritten while it is looked at.
        auto patience = std::chrono::milliseconds(1);
        reader.setCurrentIndex(round);
        while (!hasRead.try_acquire_for(patience)) {
            reader.setCurrentIndex(round);
            patience = std::min(2 * patience, std::chrono::milliseconds(256));
        }
        if (round % 2 == 0) {
            reader.close();
            reader.start();
        }
        reader.close();
        consumer.join();
        if (round % 3 == 0) {
            reader.releaseReaderSource(source.get());
        }
        deleteEndedThreads();
    }
    EXPECT_EQ(blocks, rounds);
    EXPECT_EQ(messages.count(QtWarningMsg, QStringLiteral("KOVAudioSource::readData timeout")), 0);
}

TEST(MonitorLifetimes, MayPassInATightLoopWhileOneFeedsAndOneReads)
{
    constexpr int rounds = 100;
    for (int round = 0; round < rounds; ++round) {
        KOVSuperHeterodyne monitor;
        monitor.init();
        std::latch begin(3);
        std::atomic<bool> hasFed{false};
        std::thread feeding([&] {
            std::vector<float> block(512, 0.1F);
            begin.arrive_and_wait();
            for (int i = 0; i < 20; ++i) {
                monitor.feedSignal(block.data(), 512);
            }
            hasFed = true;
        });
        int heard = 0;
        std::thread reading([&] {
            begin.arrive_and_wait();
            while (!hasFed) {
                int count = 0;
                if (monitor.readAll(count) != nullptr) {
                    heard += count;
                }
            }
        });
        begin.arrive_and_wait();
        for (int i = 0; i < 10; ++i) {
            monitor.start();
            monitor.setVolume(static_cast<float>(i));
            monitor.stop();
        }
        feeding.join();
        reading.join();
        ASSERT_LE(heard, 20 * 512 / 2);
        ASSERT_FALSE(monitor.isStart());
    }
}

}  // namespace

// Workers end in the event loop of the thread that started them.
int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
