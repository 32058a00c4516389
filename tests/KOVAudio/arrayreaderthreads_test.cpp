// The reader's worker: how it begins and ends, and objects that go at awkward moments.
#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QThread>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <thread>

#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>
#include <KOVDoaHandle/KOVAudio/kovhwmultaudio.h>
#include <KOVDoaHandle/runtime/kovthread.h>

#include "playback.h"
#include "streamtesting.h"
#include "wavsets.h"

namespace {

using StreamTesting::letTheWorkerWait;
using StreamTesting::Listener;
using StreamTesting::Messages;
using StreamTesting::publishOne;
using StreamTesting::sampleOf;
using StreamTesting::WavFolder;

class ArrayReaderThreads : public ::testing::Test
{
protected:
    ArrayReaderThreads()
    {
        folder.writeSet(1);
        EXPECT_TRUE(reader->init(folder.path()));
    }

    WavFolder folder;
    std::unique_ptr<KOVHwMultAudio> reader = std::make_unique<KOVHwMultAudio>(8);
};

TEST_F(ArrayReaderThreads, WorkFromStartToClose)
{
    EXPECT_FALSE(reader->isWorking());
    reader->start();
    EXPECT_TRUE(reader->isWorking());
    reader->close();
    EXPECT_FALSE(reader->isWorking());
}

TEST_F(ArrayReaderThreads, MayBeClosedWithoutAStart)
{
    reader->close();
    reader->close();

    EXPECT_FALSE(reader->isWorking());
}

// What the worker is called when it says that it has begun.
std::mutex workerMutex;
QString workerName;
QString workerLabel;
std::atomic<bool> hasBegun{false};

TEST_F(ArrayReaderThreads, LabelTheWorkerBeforeItSaysThatItHasBegun)
{
    const QtMessageHandler before =
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
            if (type == QtDebugMsg && text == QStringLiteral("audio file open success")) {
                auto* const thread = qobject_cast<KOVThread*>(QThread::currentThread());
                const std::lock_guard lock(workerMutex);
                workerLabel = thread != nullptr ? thread->getLabel() : QString();
                workerName = thread != nullptr ? thread->objectName() : QString();
                hasBegun = true;
            }
        });

    reader->start();
    while (!hasBegun) {
        std::this_thread::yield();
    }
    reader->close();
    qInstallMessageHandler(before);

    const std::lock_guard lock(workerMutex);
    EXPECT_EQ(workerLabel, QStringLiteral("hwAudioRd"));
    EXPECT_EQ(workerName, QStringLiteral("hwAudioRd"));
}

TEST_F(ArrayReaderThreads, PublishOneMoreBlockWhenClosedWhileTheWorkerWaits)
{
    Listener listener(*reader);
    bool hasComeAfterClose = false;
    // Where the worker was not waiting yet, close() ends it without a block, and it is tried again.
    for (int round = 0; round < 20 && !hasComeAfterClose; ++round) {
        reader->start();
        publishOne(*reader, listener, 4);
        const std::size_t before = listener.count();
        letTheWorkerWait();

        reader->close();

        hasComeAfterClose = listener.awaitCount(before + 1, std::chrono::seconds(1));
        EXPECT_FALSE(listener.awaitCount(before + 2, std::chrono::milliseconds(20)));
    }

    EXPECT_TRUE(hasComeAfterClose);
    EXPECT_EQ(listener.block(listener.count() - 1).timeStamp(), 4.0F * 1024.0F * 1000.0F / 96000.0F);
}

TEST_F(ArrayReaderThreads, PublishNothingMoreAfterTheLastBlock)
{
    Listener listener(*reader);
    reader->start();
    publishOne(*reader, listener, 0);
    reader->close();
    listener.awaitCount(2, std::chrono::milliseconds(200));
    const std::size_t afterClose = listener.count();

    reader->setCurrentIndex(1);
    reader->setCurrentIndex(2);

    EXPECT_FALSE(listener.awaitCount(afterClose + 1, std::chrono::milliseconds(50)));
}

// A worker that were not ended would keep the pool; AddressSanitizer's leak check would not see it, but the number of
// threads does.
int runningThreads()
{
    return static_cast<int>(
        QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size());
}

// ThreadSanitizer starts a thread of its own beside the first one of the process, which is made here.
int threadsAtRest()
{
    std::thread([] {}).join();
    return runningThreads();
}

// Until no more than `threads` run, or 20 s have passed.
void awaitThreads(int threads)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (runningThreads() > threads && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

TEST_F(ArrayReaderThreads, EndTheWorkerHoweverSoonTheyAreClosed)
{
    const int threadsBefore = threadsAtRest();
    for (int round = 0; round < 200; ++round) {
        reader->start();
        if (round % 2 == 1) {
            std::this_thread::sleep_for(std::chrono::microseconds(10 * round));
        }
        reader->close();
    }

    awaitThreads(threadsBefore);
    EXPECT_LE(runningThreads(), threadsBefore);
}

TEST_F(ArrayReaderThreads, SurviveEveryControlFromSeveralThreadsAtOnce)
{
    constexpr int rounds = 100;
    const int threadsBefore = threadsAtRest();
    const auto close = [this] {
        for (int round = 0; round < rounds; ++round) {
            reader->close();
            std::this_thread::yield();
        }
    };
    const auto load = [this] {
        for (int round = 0; round < rounds / 5; ++round) {
            EXPECT_TRUE(reader->init(folder.path()));
            EXPECT_EQ(reader->getTotalDataSize(), 2 * 1024);
        }
    };
    const auto createAndRelease = [this] {
        for (int round = 0; round < rounds; ++round) {
            IKOVServerReaderSource* const created = reader->createReaderSource(QStringLiteral("short"));
            const std::unique_ptr<KOVAudioSource> source(dynamic_cast<KOVAudioSource*>(created));
            reader->setCurrentIndex(round);
            reader->releaseReaderSource(created);
        }
    };

    std::thread threads[] = {std::thread(close), std::thread(load), std::thread(createAndRelease),
                             std::thread(createAndRelease)};
    // Here and not on one of those: the thread that starts a worker is the one that frees its object, later on.
    for (int round = 0; round < rounds; ++round) {
        reader->start();
        reader->isWorking();
        reader->close();
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    EXPECT_FALSE(reader->isWorking());
    awaitThreads(threadsBefore);
    EXPECT_LE(runningThreads(), threadsBefore);
    Listener listener(*reader);
    reader->start();
    EXPECT_EQ(publishOne(*reader, listener, 0).data(7)[1023], sampleOf(7, 1023));
    reader->close();
}

TEST_F(ArrayReaderThreads, KeepOneWorkerWhenStartedTwice)
{
    Listener listener(*reader);
    reader->start();
    publishOne(*reader, listener, 0);

    reader->start();
    letTheWorkerWait();
    publishOne(*reader, listener, 1);

    EXPECT_FALSE(listener.awaitCount(3, std::chrono::milliseconds(50)));
    reader->close();
}

TEST_F(ArrayReaderThreads, WorkAgainAfterAClose)
{
    Listener listener(*reader);
    for (int round = 0; round < 5; ++round) {
        reader->start();
        KOVAudioBuffer block = publishOne(*reader, listener, round);
        EXPECT_EQ(block.data(7)[1023], sampleOf(7, 1023));
        reader->close();
    }
}

TEST_F(ArrayReaderThreads, MayBeLoadedAgainWhileTheyWork)
{
    const WavFolder other;
    other.writeSet(1, {.rate = 192'000, .frames = 4096});
    Listener listener(*reader);
    reader->start();
    publishOne(*reader, listener, 0);

    ASSERT_TRUE(reader->init(other.path()));

    EXPECT_EQ(publishOne(*reader, listener, 1).samples(), 1024);
    reader->close();
    listener.awaitCount(3, std::chrono::milliseconds(200));
    reader->start();
    EXPECT_EQ(publishOne(*reader, listener, 1).samples(), 2048);
    reader->close();
}

TEST_F(ArrayReaderThreads, PublishNothingWhenNothingWasLoaded)
{
    KOVHwMultAudio empty(8);
    Listener listener(empty);
    empty.start();
    letTheWorkerWait();
    empty.setCurrentIndex(0);

    EXPECT_FALSE(listener.awaitCount(1, std::chrono::milliseconds(50)));
    empty.close();
}

TEST_F(ArrayReaderThreads, TakeNewSourcesAndLoseDeletedOnesWhileTheyPublish)
{
    reader->start();
    std::atomic<bool> isDone{false};
    std::thread pacer([&] {
        for (int i = 0; !isDone; ++i) {
            reader->setCurrentIndex(i);
            std::this_thread::yield();
        }
    });

    for (int round = 0; round < 200; ++round) {
        IKOVServerReaderSource* const created = reader->createReaderSource(QStringLiteral("short"));
        std::unique_ptr<KOVAudioSource> source(dynamic_cast<KOVAudioSource*>(created));
        if (round % 10 == 0) {
            EXPECT_TRUE(source->readData().isValid());
        }
        if (round % 2 == 0) {
            reader->releaseReaderSource(created);
        }
        // The others are deleted without being taken back, perhaps while a block is on its way to them.
    }
    isDone = true;
    pacer.join();
    reader->close();
}

TEST_F(ArrayReaderThreads, TakeADeletedSourceBackWithoutLosingAnother)
{
    Listener kept(*reader);
    std::unique_ptr<KOVAudioSource> gone(
        dynamic_cast<KOVAudioSource*>(reader->createReaderSource(QStringLiteral("gone"))));
    const IKOVServerReaderSource* const address = gone.get();
    gone.reset();
    reader->releaseReaderSource(const_cast<IKOVServerReaderSource*>(address));
    reader->start();

    EXPECT_EQ(publishOne(*reader, kept, 0).data(0)[0], sampleOf(0, 0));
    reader->close();
}

TEST_F(ArrayReaderThreads, MayBeDestroyedRightAfterTheClose)
{
    for (int round = 0; round < 50; ++round) {
        KOVHwMultAudio shortLived(8);
        shortLived.init(folder.path());
        Listener listener(shortLived);
        shortLived.start();
        if (round % 5 == 0) {
            publishOne(shortLived, listener, 0);
        }
        shortLived.close();
    }
}

TEST_F(ArrayReaderThreads, LeaveTheirSourcesAliveWhenTheyAreDestroyed)
{
    Listener listener(*reader);
    listener.forgetReader();
    reader->start();
    publishOne(*reader, listener, 0);
    reader->close();
    reader.reset();

    listener.awaitCount(2, std::chrono::milliseconds(200));
    EXPECT_EQ(listener.block(0).data(7)[1023], sampleOf(7, 1023));
}

TEST_F(ArrayReaderThreads, MayBeDestroyedWithoutACloseWhileTheWorkerWaits)
{
    Listener listener(*reader);
    listener.forgetReader();
    reader->start();
    publishOne(*reader, listener, 0);
    letTheWorkerWait();

    reader.reset();

    EXPECT_FALSE(listener.awaitCount(2, std::chrono::milliseconds(50)));
}

}  // namespace
