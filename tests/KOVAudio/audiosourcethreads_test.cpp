// The queue under several threads. A reader whose wake got lost would wait 30 s and say so; every test asserts that
// nobody did.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>

#include "streamtesting.h"

namespace {

using StreamTesting::makeBlock;
using StreamTesting::Messages;

class AudioSourceThreads : public ::testing::Test
{
protected:
    ~AudioSourceThreads() override
    {
        EXPECT_EQ(messages.count(QtWarningMsg, QStringLiteral("KOVAudioSource::readData timeout")), 0);
    }

    // Not awaited, because a wait cannot be seen from outside: where the other thread is late the test is weaker.
    static void letTheOtherThreadWait() { std::this_thread::sleep_for(std::chrono::milliseconds(20)); }

    Messages messages;
    std::unique_ptr<KOVAudioSource> source = std::make_unique<KOVAudioSource>(QStringLiteral("s"), 96000, 2);
};

TEST_F(AudioSourceThreads, WakeAWaitingReaderWithTheBlockThatIsAppended)
{
    KOVAudioBuffer block = makeBlock(7.0F);
    std::thread producer([&] {
        letTheOtherThreadWait();
        source->appendData(block);
    });

    auto read = source->readData().value<KOVAudioBuffer>();
    producer.join();

    EXPECT_EQ(read.data(), block.data());
}

TEST_F(AudioSourceThreads, GiveAnOnlyConsumerAValidBlockAtEveryReadWhereAppendAndWaitMeet)
{
    constexpr int blocks = 5000;
    std::atomic<int> taken{0};
    std::thread consumer([&] {
        for (int i = 0; i < blocks; ++i) {
            const QVariant read = source->readData();
            ASSERT_TRUE(read.isValid());
            EXPECT_EQ(read.value<KOVAudioBuffer>().timeStamp(), static_cast<float>(i));
            ++taken;
        }
    });
    for (int i = 0; i < blocks; ++i) {
        // At most two wait in the queue, so that the consumer often finds it empty and nothing is refused.
        while (i - taken > 2 && !HasFailure()) {
            std::this_thread::yield();
        }
        source->appendData(makeBlock(static_cast<float>(i), 1, 1));
    }
    consumer.join();
}

TEST_F(AudioSourceThreads, PassEveryBlockOfSeveralProducersToOneOfSeveralConsumers)
{
    constexpr int producers = 3;
    constexpr int consumers = 3;
    constexpr int blocksEach = 1000;
    constexpr int blocks = producers * blocksEach;
    std::atomic<int> claimed{0};
    std::atomic<int> taken{0};
    std::mutex mutex;
    std::multiset<int> seen;
    std::vector<std::thread> threads;
    for (int p = 0; p < producers; ++p) {
        threads.emplace_back([&] {
            for (int i = 0; i < blocksEach; ++i) {
                const int number = claimed++;
                while (number - taken >= 5) {
                    std::this_thread::yield();
                }
                source->appendData(makeBlock(static_cast<float>(number), 1, 1));
            }
        });
    }
    for (int c = 0; c < consumers; ++c) {
        threads.emplace_back([&] {
            while (taken < blocks) {
                const QVariant read = source->readData();
                if (!read.isValid()) {
                    continue;  // another one was faster
                }
                const std::lock_guard lock(mutex);
                seen.insert(static_cast<int>(read.value<KOVAudioBuffer>().timeStamp()));
                ++taken;
            }
        });
    }
    // One that looked at the count just before the last block came waits on; it is woken until all are done.
    std::atomic<bool> isDone{false};
    std::thread waker([&] {
        while (!isDone) {
            if (taken == blocks) {
                source->onDataReady();
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    for (std::thread& thread : threads) {
        thread.join();
    }
    isDone = true;
    waker.join();

    EXPECT_EQ(seen.size(), static_cast<std::size_t>(blocks));
    EXPECT_EQ(std::set<int>(seen.begin(), seen.end()).size(), static_cast<std::size_t>(blocks));
}

TEST_F(AudioSourceThreads, GiveAnInvalidVariantToAReaderThatIsWokenWithoutABlock)
{
    std::atomic<bool> isBack{false};
    bool isValid = true;
    std::thread reader([&] {
        isValid = source->readData().isValid();
        isBack = true;
    });

    while (!isBack) {
        source->onDataReady();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    reader.join();

    EXPECT_FALSE(isValid);
}

TEST_F(AudioSourceThreads, WakeAllReadersForOneBlockAndLeaveTheSlowerOnesEmptyHanded)
{
    constexpr int readers = 3;
    std::atomic<int> valid{0};
    std::atomic<int> back{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < readers; ++i) {
        threads.emplace_back([&] {
            valid += source->readData().isValid() ? 1 : 0;
            ++back;
        });
    }

    letTheOtherThreadWait();
    source->appendData(makeBlock(1.0F));
    while (back < readers) {
        source->onDataReady();  // for one that has come late
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    EXPECT_EQ(valid, 1);
}

TEST_F(AudioSourceThreads, ReleaseAReaderLeftWaitingWhenTheSourceIsDeleted)
{
    for (int round = 0; round < 20; ++round) {
        source = std::make_unique<KOVAudioSource>(QStringLiteral("s"), 96000, 2);
        std::atomic<bool> isEntering{false};
        bool isValid = true;
        std::thread reader([&isEntering, &isValid, raw = source.get()] {
            isEntering = true;
            isValid = raw->readData().isValid();
        });
        while (!isEntering) {
            std::this_thread::yield();
        }
        letTheOtherThreadWait();

        source.reset();
        reader.join();

        EXPECT_FALSE(isValid);
    }
}

TEST_F(AudioSourceThreads, ReleaseSeveralReadersWhenTheSourceIsDeleted)
{
    std::vector<std::thread> readers;
    std::atomic<int> entering{0};
    for (int i = 0; i < 4; ++i) {
        readers.emplace_back([&entering, raw = source.get()] {
            ++entering;
            raw->readData();
        });
    }
    while (entering < 4) {
        std::this_thread::yield();
    }
    letTheOtherThreadWait();

    source.reset();

    for (std::thread& reader : readers) {
        reader.join();
    }
}

TEST_F(AudioSourceThreads, MayDropBlocksWhileOthersAppendAndRead)
{
    std::atomic<bool> isDone{false};
    std::thread consumer([&] {
        while (!isDone) {
            source->readData();
        }
    });
    std::thread dropper([&] {
        while (!isDone) {
            source->clearData();
            std::this_thread::yield();
        }
    });
    for (int i = 0; i < 2000; ++i) {
        source->appendData(makeBlock(static_cast<float>(i), 1, 1));
    }
    isDone = true;
    dropper.join();
    source->appendData(makeBlock(0.0F));  // for the consumer if it waits; if not, it stays in the queue
    consumer.join();

    source->clearData();
    source->appendData(makeBlock(5.0F));
    EXPECT_EQ(source->readData().value<KOVAudioBuffer>().timeStamp(), 5.0F);
}

TEST_F(AudioSourceThreads, ShareABufferAmongThreadsThatCopyAndDropIt)
{
    const KOVAudioBuffer shared = makeBlock(3.0F);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([copy = shared] {
            for (int i = 0; i < 2000; ++i) {
                KOVAudioBuffer another(copy);
                KOVAudioBuffer third;
                third = another;
                EXPECT_EQ(third.data(1)[0], 103.0F);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace
