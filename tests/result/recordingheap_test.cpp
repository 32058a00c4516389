// Frames live in the cache: the heap takes only a small part of each, and nothing of the file's size.
#include <gtest/gtest.h>

#include <QtCore/QFileInfo>

#include <malloc.h>

#include <algorithm>
#include <atomic>

#include "resulttesting.h"

namespace {

using ResultTesting::Folder;

// Sanitizers bring an allocator of their own, which does not answer mallinfo2().
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool canMeasure = false;
#else
constexpr bool canMeasure = true;
#endif

qint64 heapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<qint64>(info.uordblks + info.hblkhd);
}

std::atomic<qint64> highestHeap{0};
std::atomic<int> messagesSeen{0};

// Runs on the loading thread for every message, so it sees the heap in all phases of the load.
void sampleHeap(QtMsgType, const QMessageLogContext&, const QString& text)
{
    if (++messagesSeen % 100 == 0 || text.startsWith("file size") || text.startsWith("load data")) {
        highestHeap = std::max(highestHeap.load(), heapBytes());
    }
}

TEST(RecordingHeap, GrowsByTwoKibibytesAFrameAtMostAndShrinksAgain)
{
    if (!canMeasure) {
        GTEST_SKIP() << "another allocator is in place";
    }
    constexpr int frames = 10'000;
    constexpr qint64 smallPart = qint64{frames} * 2048;
    const Folder folder;
    const QtMessageHandler before = qInstallMessageHandler(sampleHeap);
    {
        KOVDoaResultSerialize writer(folder.cache());
        writer.startSave(folder.file(), 64, 48, 480, 640, 1024);
        const ResultTesting::Result result = ResultTesting::makeResult(64, 48, 1024);
        for (int i = 0; i < frames; ++i) {
            writer.Save(result.get());
        }
    }
    const qint64 fileBytes = QFileInfo(folder.file()).size();
    const qint64 heapBefore = heapBytes();
    highestHeap = 0;
    {
        KOVDoaResultSerialize reader(folder.cache());
        reader.openResultFile(folder.file());
        ResultTesting::waitUntilComplete(reader);
        const qint64 heapAfter = heapBytes();

        EXPECT_EQ(reader.getResultFrame(), frames);
        ASSERT_GT(fileBytes, 5 * smallPart);
        EXPECT_GT(highestHeap - heapBefore, qint64{frames} * 500);  // the samples were taken during the load
        EXPECT_LE(highestHeap - heapBefore, smallPart);
        EXPECT_LE(heapAfter - heapBefore, smallPart);
    }
    EXPECT_LE(heapBytes() - heapBefore, 100'000);
    EXPECT_EQ(folder.cacheFiles(), 0);
    qInstallMessageHandler(before);
}

}  // namespace
