// What the tests of recording and playback share.
#ifndef KOVDOA_TESTS_RESULTTESTING_H
#define KOVDOA_TESTS_RESULTTESTING_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>

#include <memory>
#include <mutex>
#include <vector>

#include <KOVDoaHandle/api/results.h>
#include <KOVDoaHandle/imaging/engmapresult.h>
#include <KOVDoaHandle/result/kovdoaresultserialize.h>

namespace ResultTesting {

struct Message
{
    QtMsgType type = QtDebugMsg;
    QString text;
    QByteArray file;
    QByteArray function;
    QByteArray category;
};

// Catches every message while it lives, so that nothing is printed. Messages may come from any thread.
class Messages
{
public:
    Messages();
    ~Messages();
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;

    std::vector<Message> all() const;
    QStringList texts() const;
    // Number of messages that contain `part`.
    int count(const QString& part) const;

    void add(const Message& message);

private:
    mutable std::mutex m_mutex;
    std::vector<Message> m_messages;
    QtMessageHandler m_before = nullptr;
};

// A folder that goes with the test, and names in it.
class Folder
{
public:
    QString path(const QString& name) const { return m_folder.filePath(name); }
    QString file() const { return path("recording.kov"); }
    QString cache() const { return path("cache"); }
    // Number of files in the cache folder, and their bytes.
    int cacheFiles() const;
    qint64 cacheBytes() const;

private:
    QTemporaryDir m_folder;
};

struct ResultDeleter
{
    void operator()(EngMapResult* result) const { releaseResultHandle(result); }
};
using Result = std::unique_ptr<EngMapResult, ResultDeleter>;

// A frame in which every field has a value of its own; `seed` makes different frames. Its floats survive their way
// through six digits.
Result makeResult(int rows, int cols, int fftLen, int seed = 0);

QByteArray readFile(const QString& path);
void writeFile(const QString& path, const QByteArray& bytes);

// The header of a file as it has to be, spelled out.
QByteArray header(const QByteArray& resRow, const QByteArray& resCol, const QByteArray& fftLen,
                  const QByteArray& imgRow = "480", const QByteArray& imgCol = "640");
QByteArray header(int resRow, int resCol, int fftLen);

QByteArray floatBytes(const std::vector<float>& values);

// Waits for the end of a load; fails the test when it does not come.
void waitUntilComplete(KOVDoaResultSerialize& recording);

// A recording that has been loaded.
class Loaded
{
public:
    Loaded(const QString& file, const QString& cache);

    KOVDoaResultSerialize* operator->() { return &m_recording; }
    EngMapResult& frame(int index) { return *m_recording.getResultFromIndex(index); }
    int frames() { return m_recording.getResultFrame(); }

private:
    KOVDoaResultSerialize m_recording;
};

// Writes `bytes` into the folder's file and loads it.
Loaded loadBytes(const Folder& folder, const QByteArray& bytes);

std::vector<float> mapValues(const EngMapResult& frame);
std::vector<float> spectrumValues(const EngMapResult& frame);

}  // namespace ResultTesting

bool operator==(const fpoint2d& a, const fpoint2d& b);
bool operator==(const TargetPoint& a, const TargetPoint& b);

#endif
