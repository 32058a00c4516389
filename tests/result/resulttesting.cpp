#include "resulttesting.h"

#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <thread>

namespace ResultTesting {

namespace {

// Qt's handler is a plain function, so the living Messages object is found here.
std::mutex handlerMutex;
Messages* handlerTarget = nullptr;

void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    const std::lock_guard lock(handlerMutex);
    if (handlerTarget != nullptr) {
        handlerTarget->add({type, text, context.file, context.function, context.category});
    }
}

}  // namespace

Messages::Messages()
{
    {
        const std::lock_guard lock(handlerMutex);
        handlerTarget = this;
    }
    m_before = qInstallMessageHandler(handleMessage);
}

Messages::~Messages()
{
    qInstallMessageHandler(m_before);
    const std::lock_guard lock(handlerMutex);
    handlerTarget = nullptr;
}

void Messages::add(const Message& message)
{
    const std::lock_guard lock(m_mutex);
    m_messages.push_back(message);
}

std::vector<Message> Messages::all() const
{
    const std::lock_guard lock(m_mutex);
    return m_messages;
}

QStringList Messages::texts() const
{
    QStringList texts;
    for (const Message& message : all()) {
        texts << message.text;
    }
    return texts;
}

int Messages::count(const QString& part) const
{
    return texts().filter(part).size();
}

int Folder::cacheFiles() const
{
    return QDir(cache()).entryList(QDir::Files).size();
}

qint64 Folder::cacheBytes() const
{
    qint64 bytes = 0;
    for (const QFileInfo& file : QDir(cache()).entryInfoList(QDir::Files)) {
        bytes += file.size();
    }
    return bytes;
}

Result makeResult(int rows, int cols, int fftLen, int seed)
{
    Result result(createResultHandle(rows, cols, 480, 640, fftLen));
    const auto base = static_cast<float>(seed);
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < cols; ++c) {
            result->ResEngMap->data[r][c] = base + 0.001F + static_cast<float>(r * cols + c) / 3.0F;
        }
    }
    for (int i = 0; i < result->PowerSpec->len; ++i) {
        result->PowerSpec->data[i] = base + 1e-6F / static_cast<float>(i + 1);
    }
    result->PowerBandsFFTSpec = base + 65.5F;
    result->maxSpl = {base + 0.75F, 1, 2};
    result->minSpl = {base + 0.125F, 3, 4};
    result->maxSplExtern = {base + 0.5F, 5, 6};
    result->minSplExtern = {base + 0.0625F, 7, 8};
    result->maxSplView = {base + 1.75F, 9, 10};
    result->minSplView = {base + 1.125F, 11, 12};
    result->maxSplExternView = {base + 1.5F, 13, 14};
    result->minSplExternView = {base + 1.0625F, 15, 16};
    result->peaks = {{base + 2.5F, 17, 18, 19, 20, true}, {base + 3.5F, 21, 22, 23, 24, false}};
    result->firstPointInRadius = seed % 2 == 0;
    result->median = base + 0.25F;
    result->distance = base + 5.5F;
    return result;
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return file.readAll();
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    // Some file systems flush a file that is emptied and written again, which is slow; a new one they do not.
    QFile::remove(path);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(path);
    ASSERT_EQ(file.write(bytes), bytes.size());
}

QByteArray header(const QByteArray& resRow, const QByteArray& resCol, const QByteArray& fftLen,
                  const QByteArray& imgRow, const QByteArray& imgCol)
{
    return "==FILE_INFO_START==\r\nVERSION:0015\r\nRESROW:" + resRow + "\r\nRESCOL:" + resCol +
           "\r\nIMGROW:" + imgRow + "\r\nIMGCOL:" + imgCol + "\r\nFFTLEN:" + fftLen +
           "\r\n==FILE_INFO_END==\r\n==STRUCT_INFO_START==\r\nResEngMap:ON\r\nResAngleEng:"
           "OFF\r\nResAngleEngBGR:OFF\r\n"
           "PowerSpec:ON\r\nPowerBandsFFTSpec:ON\r\nmaxSpl:ON\r\nminSpl:ON\r\nmaxSplExtern:"
           "ON\r\nminSplExtern:ON\r\n"
           "maxSplView:ON\r\nminSplView:ON\r\nmaxSplExternView:ON\r\nminSplExternView:ON\r\npeaks:ON\r\n"
           "firstPointInRadius:ON\r\nmedian:ON\r\ndistance:ON\r\n==STRUCT_INFO_END==\r\n";
}

QByteArray header(int resRow, int resCol, int fftLen)
{
    return header(QByteArray::number(resRow), QByteArray::number(resCol), QByteArray::number(fftLen));
}

QByteArray floatBytes(const std::vector<float>& values)
{
    return QByteArray(reinterpret_cast<const char*>(values.data()),
                      static_cast<int>(values.size() * sizeof(float)));
}

void waitUntilComplete(KOVDoaResultSerialize& recording)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(100);
    while (!recording.IsOpenFileComplete()) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "the load does not end";
        // There is nothing to wait on, only a flag to poll, like a host does.
        std::this_thread::sleep_for(std::chrono::microseconds(20));
    }
}

Loaded::Loaded(const QString& file, const QString& cache) : m_recording(cache)
{
    m_recording.openResultFile(file);
    waitUntilComplete(m_recording);
}

Loaded loadBytes(const Folder& folder, const QByteArray& bytes)
{
    writeFile(folder.file(), bytes);
    return Loaded(folder.file(), folder.cache());
}

std::vector<float> mapValues(const EngMapResult& frame)
{
    std::vector<float> values;
    for (int row = 0; row < frame.ResEngMap->rows && frame.ResEngMap->cols > 0; ++row) {
        const float* const cells = frame.ResEngMap->data[row];
        values.insert(values.end(), cells, cells + frame.ResEngMap->cols);
    }
    return values;
}

std::vector<float> spectrumValues(const EngMapResult& frame)
{
    return {frame.PowerSpec->data, frame.PowerSpec->data + std::max(frame.PowerSpec->len, 0)};
}

}  // namespace ResultTesting

bool operator==(const fpoint2d& a, const fpoint2d& b)
{
    return a.value == b.value && a.row == b.row && a.col == b.col;
}

bool operator==(const TargetPoint& a, const TargetPoint& b)
{
    return a.value == b.value && a.row == b.row && a.col == b.col && a.id == b.id && a.life == b.life &&
           a.matched == b.matched;
}
