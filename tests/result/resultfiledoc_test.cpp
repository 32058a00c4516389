// The worked example in docs/result-file.md is a real file: writer and reader are held to it.
#include <gtest/gtest.h>

#include <QtCore/QRegularExpression>

#include <bit>
#include <cstdint>

#include "resulttesting.h"

namespace {

using ResultTesting::Folder;
using ResultTesting::Messages;
using ResultTesting::Result;

// The bytes of the page's dump: lines of an offset, up to 16 bytes in hexadecimal, and their text.
QByteArray exampleBytes()
{
    const QString page =
        QString::fromUtf8(ResultTesting::readFile(QStringLiteral(KOVDOA_DOCS_DIR "/result-file.md")));
    static const QRegularExpression line("^([0-9a-f]{4})  ((?:[0-9a-f]{2} {1,2}){1,16})",
                                         QRegularExpression::MultilineOption);
    QByteArray bytes;
    for (auto lines = line.globalMatch(page); lines.hasNext();) {
        const QRegularExpressionMatch match = lines.next();
        EXPECT_EQ(match.captured(1).toInt(nullptr, 16), bytes.size());
        bytes += QByteArray::fromHex(match.captured(2).toLatin1());
    }
    return bytes;
}

Result exampleResult()
{
    Result result(createResultHandle(2, 2, 480, 640, 2));
    result->PowerBandsFFTSpec = 71.25F;
    result->maxSpl = {0.75F, 1, 0};
    result->minSpl = {0.25F, 0, 0};
    result->maxSplExtern = {0.5F, 0, 1};
    result->minSplExtern = {0.125F, 1, 1};
    result->maxSplView = {0.375F, 1, 0};
    result->minSplView = {-0.125F, 0, 0};
    result->maxSplExternView = {0.125F, 0, 1};
    result->minSplExternView = {-0.25F, 1, 1};
    result->firstPointInRadius = true;
    result->median = 0.375F;
    result->distance = 5.5F;
    result->peaks = {{0.75F, 1, 0, 7, 12, true}};
    result->PowerSpec->data[0] = 1e-6F;
    result->PowerSpec->data[1] = std::bit_cast<float>(std::uint32_t{0x3F0A0D00});
    result->ResEngMap->data[0][0] = 0.25F;
    result->ResEngMap->data[0][1] = 0.5F;
    result->ResEngMap->data[1][0] = 0.75F;
    result->ResEngMap->data[1][1] = 0.125F;
    return result;
}

TEST(ResultFileDocument, ShowsWhatTheWriterWrites)
{
    const Messages messages;
    const Folder folder;
    KOVDoaResultSerialize writer(folder.cache());

    writer.startSave(folder.file(), 2, 2, 480, 640, 2);
    writer.Save(exampleResult().get());

    EXPECT_EQ(exampleBytes(), ResultTesting::readFile(folder.file()));
}

TEST(ResultFileDocument, ShowsWhatTheReaderReads)
{
    const Messages messages;
    const Folder folder;
    const Result expected = exampleResult();

    ResultTesting::Loaded loaded = ResultTesting::loadBytes(folder, exampleBytes());

    ASSERT_EQ(loaded.frames(), 1);
    EXPECT_EQ(ResultTesting::mapValues(loaded.frame(0)), ResultTesting::mapValues(*expected));
    EXPECT_EQ(ResultTesting::spectrumValues(loaded.frame(0)), ResultTesting::spectrumValues(*expected));
    EXPECT_EQ(loaded.frame(0).peaks, expected->peaks);
    EXPECT_EQ(loaded.frame(0).maxSplExtern, expected->maxSplExternView);
}

}  // namespace
