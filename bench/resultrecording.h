// Frames and recordings of them for the benchmarks.
#ifndef KOVDOA_BENCH_RESULTRECORDING_H
#define KOVDOA_BENCH_RESULTRECORDING_H

#include <QtCore/QString>
#include <QtCore/QTemporaryDir>

#include <cmath>
#include <cstddef>
#include <memory>

#include <KOVDoaHandle/api/results.h>
#include <KOVDoaHandle/imaging/engmapresult.h>
#include <KOVDoaHandle/result/kovdoaresultserialize.h>

namespace bench {

struct FrameSize
{
    int rows;
    int cols;
    int fftLen;

    // The binary part of a record: map and spectrum.
    constexpr std::size_t blockBytes() const
    {
        return (static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols) +
                static_cast<std::size_t>(fftLen / 2 + 1)) *
               sizeof(float);
    }
};

struct ResultDeleter
{
    void operator()(EngMapResult* result) const { releaseResultHandle(result); }
};
using Result = std::unique_ptr<EngMapResult, ResultDeleter>;

inline Result makeResult(FrameSize size)
{
    Result result(createResultHandle(size.rows, size.cols, 480, 640, size.fftLen));
    for (int r = 0; r < size.rows; ++r) {
        for (int c = 0; c < size.cols; ++c) {
            result->ResEngMap->data[r][c] = 0.01F + static_cast<float>(std::hypot(r - 20, c - 30));
        }
    }
    for (int i = 0; i < result->PowerSpec->len; ++i) {
        result->PowerSpec->data[i] = 1e-6F / (1.0F + static_cast<float>(i));
    }
    result->PowerBandsFFTSpec = 71.2345F;
    result->maxSpl = {0.123456F, 20, 30};
    result->minSplExtern = {0.000123F, 1, 2};
    result->median = 0.0456789F;
    result->distance = 5.5F;
    result->peaks = {{0.123456F, 20, 30, 1, 17, true}, {0.0912345F, 40, 11, 2, 3, false}};
    return result;
}

// A temporary folder with a recording in it. Messages are discarded from now on.
class ResultRecording
{
public:
    ResultRecording(FrameSize size, int frames) : m_size(size)
    {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        KOVDoaResultSerialize writer(m_folder.filePath("writer-cache"));
        start(writer);
        const Result result = makeResult(size);
        for (int i = 0; i < frames; ++i) {
            writer.Save(result.get());
        }
    }

    QString file() const { return m_folder.filePath("bench.kov"); }
    QString cache() const { return m_folder.filePath("cache"); }

    // Begins the recording anew.
    void start(KOVDoaResultSerialize& writer) const
    {
        writer.startSave(file(), m_size.rows, m_size.cols, 480, 640, m_size.fftLen);
    }

private:
    QTemporaryDir m_folder;
    FrameSize m_size;
};

}  // namespace bench

#endif
