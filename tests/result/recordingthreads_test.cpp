// Loading beside a host that polls, and objects that go at awkward moments.
#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <mutex>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include <KOVDoaHandle/runtime/kovthread.h>

#include "resulttesting.h"

namespace {

using ResultTesting::Folder;
using ResultTesting::makeResult;
using ResultTesting::Messages;

constexpr int rows = 8;
constexpr int cols = 6;
constexpr int frames = 300;

class RecordingThreads : public ::testing::Test
{
protected:
    RecordingThreads()
    {
        KOVDoaResultSerialize writer(folder.cache());
        writer.startSave(folder.file(), rows, cols, 480, 640, 16);
        for (int i = 0; i < frames; ++i) {
            writer.Save(makeResult(rows, cols, 16, i).get());
        }
    }

    Messages messages;
    Folder folder;
};

// Reads everything of the frames there are, as a host may while others are still being loaded.
double readFrames(KOVDoaResultSerialize& recording)
{
    double sum = 0.0;
    const int count = recording.getResultFrame();
    for (int i = 0; i < count; ++i) {
        const EngMapResult& frame = *recording.getResultFromIndex(i);
        const std::vector<float> map = ResultTesting::mapValues(frame);
        const std::vector<float> spectrum = ResultTesting::spectrumValues(frame);
        sum = std::accumulate(map.begin(), map.end(), sum) +
              static_cast<double>(spectrum.front() + frame.median) +
              static_cast<double>(frame.peaks.at(0).value);
    }
    return sum;
}

TEST_F(RecordingThreads, MayBePolledWhileTheyLoad)
{
    KOVDoaResultSerialize recording(folder.cache());
    recording.openResultFile(folder.file());

    int lastCount = 0;
    while (!recording.IsOpenFileComplete()) {
        const int count = recording.getResultFrame();
        EXPECT_GE(count, lastCount);
        lastCount = count;
        readFrames(recording);
        EXPECT_EQ(recording.getResultFromIndex(frames), nullptr);
        EXPECT_TRUE(recording.getResRows() == 64 || recording.getResRows() == rows);
        EXPECT_TRUE(recording.getResCols() == 48 || recording.getResCols() == cols);
        EXPECT_TRUE(recording.getFFTLen() == 1024 || recording.getFFTLen() == 16);
        EXPECT_EQ(recording.getImgRows(), 480);
        EXPECT_EQ(recording.getImgCols(), 640);
        const QString version = recording.getFileVersion();
        EXPECT_TRUE(version.isEmpty() || version == "0015");
    }

    EXPECT_EQ(recording.getResultFrame(), frames);
    EXPECT_GT(readFrames(recording), 0.0);
}

TEST_F(RecordingThreads, MayGoRightAfterTheyAreComplete)
{
    for (int i = 0; i < 20; ++i) {
        KOVDoaResultSerialize recording(folder.cache());
        recording.openResultFile(folder.file());
        while (!recording.IsOpenFileComplete()) {
            std::this_thread::yield();
        }
    }

    EXPECT_EQ(folder.cacheFiles(), 0);
}

TEST_F(RecordingThreads, MayGoRightAfterALoadHasStarted)
{
    for (int i = 0; i < 20; ++i) {
        KOVDoaResultSerialize recording(folder.cache());
        recording.openResultFile(folder.file());
    }

    EXPECT_EQ(folder.cacheFiles(), 0);
}

TEST_F(RecordingThreads, MayGoInTheMiddleOfALoad)
{
    for (int i = 0; i < 20; ++i) {
        KOVDoaResultSerialize recording(folder.cache());
        recording.openResultFile(folder.file());
        while (recording.getResultFrame() < 10 && !recording.IsOpenFileComplete()) {
            std::this_thread::yield();
        }
    }

    EXPECT_EQ(folder.cacheFiles(), 0);
}

TEST_F(RecordingThreads, SayNothingMoreOnceTheyAreGone)
{
    {
        KOVDoaResultSerialize recording(folder.cache());
        recording.openResultFile(folder.file());
    }

    EXPECT_EQ(messages.count("use all time ="), 1);
}

TEST_F(RecordingThreads, StopALoadThatNobodyNeedsAnyMore)
{
    // The handler holds the loader up at its tenth record until the object is being destroyed.
    static std::atomic<int> records;
    static std::atomic<bool> isGoing;
    records = 0;
    isGoing = false;
    const QtMessageHandler before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& text) {
            if (text.startsWith("data Index") && ++records == 10) {
                isGoing.wait(false);
            }
        });
    {
        auto recording = std::make_unique<KOVDoaResultSerialize>(folder.cache());
        recording->openResultFile(folder.file());
        std::thread helper([&] {
            // Lets the destructor get to its wait; if it has not yet, more records are read, which does no harm.
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            isGoing = true;
            isGoing.notify_all();
        });
        recording.reset();
        helper.join();
    }
    qInstallMessageHandler(before);

    EXPECT_LT(records, frames);
}

TEST_F(RecordingThreads, AreNotCompleteAgainUntilASecondLoadIs)
{
    KOVDoaResultSerialize recording(folder.cache());
    recording.openResultFile(folder.file());
    ResultTesting::waitUntilComplete(recording);

    recording.openResultFile(folder.file());
    ResultTesting::waitUntilComplete(recording);

    EXPECT_EQ(recording.getResultFrame(), 2 * frames);
}

TEST_F(RecordingThreads, LoadOneFileAfterTheOtherWhenAskedTwiceAtOnce)
{
    {
        KOVDoaResultSerialize recording(folder.cache());
        recording.openResultFile(folder.file());
        recording.openResultFile(folder.path("missing.kov"));
        recording.openResultFile(folder.file());
        while (recording.getResultFrame() < 2 * frames) {
            std::this_thread::yield();
        }
    }

    EXPECT_EQ(messages.count("load data success"), 3);
    EXPECT_EQ(folder.cacheFiles(), 0);
}

TEST_F(RecordingThreads, LoadSeveralObjectsAtOnceIntoOneCacheFolder)
{
    std::vector<std::unique_ptr<KOVDoaResultSerialize>> recordings;
    for (int i = 0; i < 4; ++i) {
        recordings.push_back(std::make_unique<KOVDoaResultSerialize>(folder.cache()));
        recordings.back()->openResultFile(folder.file());
    }

    for (const auto& recording : recordings) {
        ResultTesting::waitUntilComplete(*recording);
        EXPECT_EQ(recording->getResultFrame(), frames);
    }
    EXPECT_EQ(folder.cacheFiles(), 4);
}

// What a message handler sees of the thread that loads.
struct LoaderThread
{
    std::string name;
    std::string label;
    bool autoDeletes = false;
    bool hasData = true;
};

std::mutex loaderMutex;
std::vector<LoaderThread> loaderThreads;

TEST_F(RecordingThreads, LoadOnASelfDeletingThreadNamedKOVThread)
{
    loaderThreads.clear();
    const QtMessageHandler before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {
            if (auto* thread = qobject_cast<KOVThread*>(QThread::currentThread())) {
                const std::lock_guard lock(loaderMutex);
                loaderThreads.push_back({thread->objectName().toStdString(), thread->getLabel().toStdString(),
                                         thread->isAutoDelete(), thread->ThreadData().isValid()});
            }
        });
    {
        KOVDoaResultSerialize recording(folder.cache());
        recording.openResultFile(folder.file());
    }
    qInstallMessageHandler(before);

    ASSERT_FALSE(loaderThreads.empty());
    EXPECT_EQ(loaderThreads.front().name, "KOVThread");
    EXPECT_EQ(loaderThreads.front().label, "NULL");
    EXPECT_TRUE(loaderThreads.front().autoDeletes);
    EXPECT_FALSE(loaderThreads.front().hasData);
}

}  // namespace
