#include "tests/soak/chain.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QEvent>
#include <QtCore/QFile>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>
#include <KOVDoaHandle/api/gasleak.h>
#include <KOVDoaHandle/api/imager.h>
#include <KOVDoaHandle/api/prpd.h>
#include <KOVDoaHandle/api/resultfile.h>
#include <KOVDoaHandle/result/kovdoaresultserialize.h>
#include "tests/soak/inspection.h"
#include "tests/tools/arraysamples.h"
#include "tools/gasleak/leaktablesimulation.h"

namespace soak {

namespace {

void require(bool condition, const char* what)
{
    if (!condition) {
        throw std::runtime_error(what);
    }
}

// Wakes a reader's worker as long as it lives: some blocks ahead of the frames that are done, so that none is
// overwritten before it is used. Now and then once more, since a wake is lost while the worker is busy.
class Pacer
{
public:
    explicit Pacer(KOVHwMultAudio& reader) : m_thread([this, &reader] { pace(reader); }) {}
    ~Pacer()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_isStopping = true;
        }
        m_changed.notify_one();
        m_thread.join();
    }
    Pacer(const Pacer&) = delete;
    Pacer& operator=(const Pacer&) = delete;

    void frameIsDone()
    {
        {
            const std::lock_guard lock(m_mutex);
            ++m_done;
        }
        m_changed.notify_one();
    }

private:
    void pace(KOVHwMultAudio& reader)
    {
        constexpr int ahead = 8;
        std::unique_lock lock(m_mutex);
        for (int woken = 0; !m_isStopping; ++woken) {
            lock.unlock();
            reader.setCurrentIndex(woken);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            lock.lock();
            m_changed.wait_for(lock, std::chrono::milliseconds(50),
                               [&] { return m_isStopping || woken < m_done + ahead; });
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_done = 0;
    bool m_isStopping = false;
    std::thread m_thread;
};

void writeText(const QString& path, const std::string& text)
{
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) &&
                file.write(text.data(), static_cast<qint64>(text.size())) == static_cast<qint64>(text.size()),
            "the temporary folder cannot be written to");
}

bool isBlack(const mat1d_uint8& picture)
{
    const unsigned char* const begin = picture.data;
    return std::all_of(begin, begin + std::ptrdiff_t{picture.rows} * picture.cols,
                       [](unsigned char value) { return value == 0; });
}

}  // namespace

Chain::Chain(const std::string& dischargeModels)
    : m_folderBefore(QDir::currentPath()),
      m_imager(CreateDoaObject()),
      m_prpd(CreatePRPDHandle(dischargeModels.c_str()))
{
    require(QDir::setCurrent(m_folder.path()), "no temporary folder");
    const kovtools::ArraySimulationOptions scene = kovtools::tests::defaultArrayScene(1);
    kovtools::tests::writeArray(file("array").toStdString(), scene, 2048);
    m_beamformer = std::make_unique<BeamformedBlocks>(scene.array);
    writeText(file("leaktable.txt"), kovtools::simulateLeakTable({}));
    m_gasLeak = CreateGasLeakHandle(file("leaktable.txt").toStdString().c_str());
    GasLeakSetGasLeakMode(m_gasLeak, 1);
    DoaObjectInit(m_imager, mapRows, mapCols, pictureWidth, pictureHeight);
    DoaObjectSetCursorNum(m_imager, 3);
}

Chain::~Chain()
{
    ReleaseGasLeakHandle(m_gasLeak);
    ReleasePRPDHandle(m_prpd);
    ReleaseDoaObject(m_imager);
    QDir::setCurrent(m_folderBefore);
}

void Chain::playRound(int frames)
{
    // A host deletes its old log files, too.
    QDir(QStringLiteral("log")).removeRecursively();
    QDir().mkdir(QStringLiteral("log"));
    {
        KOVHwMultAudio reader;
        require(reader.init(file("array").toUtf8().constData()), "the array's recording does not load");
        recordFrames(reader, frames);
    }
    playBack(frames);
    measureGas();
    // What the event loop of a host does: the workers' thread objects are deleted there.
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    ++m_counts.rounds;
    m_counts.frames += frames;
}

void Chain::recordFrames(KOVHwMultAudio& reader, int frames)
{
    m_recording = std::make_unique<KOVDoaResultSerialize>(file("cache"));
    m_recording->startSave(file("recording.kov"), mapRows, mapCols, pictureWidth, pictureHeight, fftLength);
    const std::unique_ptr<KOVAudioSource> source(
        dynamic_cast<KOVAudioSource*>(reader.createReaderSource(QStringLiteral("imaging"))));
    reader.start();
    {
        Inspection inspection(reader, m_prpd);
        Pacer pacer(reader);
        for (int done = 0; done < frames;) {
            const QVariant read = source->readData();
            if (read.isValid()) {
                auto block = read.value<KOVAudioBuffer>();
                imageOne(block);
                pacer.frameIsDone();
                ++done;
            }
        }
        m_counts.patterns += inspection.patterns();
        m_counts.samplesHeard += inspection.heard();
    }
    reader.close();
    reader.releaseReaderSource(source.get());
    m_recording.reset();
}

void Chain::imageOne(KOVAudioBuffer& block)
{
    const testsupport::Frame frame(
        createResultHandle(mapRows, mapCols, pictureWidth, pictureHeight, fftLength));
    m_beamformer->fill(block, *frame);
    DoaObjectUpdateImagerRGB(m_imager, frame.get(), m_overlay.get());
    m_recording->Save(frame.get());
    std::vector<fpoint2d> peaks;
    for (const TargetPoint& peak : frame->peaks) {
        peaks.push_back({peak.value, peak.row, peak.col});
    }
    m_tracks.FeedData(peaks);
}

void Chain::playBack(int frames)
{
    require(!isBlack(*m_overlay), "nothing was rendered");
    require(!m_tracks.getTargetPoints().empty(), "nothing is tracked");
    KOVDoaResultSerialize* const player = createResultSerializeHandle(
        file("recording.kov").toLatin1().constData(), file("cache").toLatin1().constData());
    while (!getIsOpenFileComplete(player)) {
        std::this_thread::yield();
    }
    const bool isWhole = getResultFrame(player) == frames;
    for (int i = 0; i < getResultFrame(player); i += 10) {
        DoaObjectUpdateImagerRGB(m_imager, getResultHandleFromIndex(player, i), m_overlay.get());
    }
    destoryResultSerializeHandle(player);
    require(isWhole, "the recording does not hold all frames");
    require(QDir(file("cache")).isEmpty(), "the cache keeps files");
}

void Chain::measureGas()
{
    for (int i = 0; i < 100; ++i) {
        GasLeakFeedData(m_gasLeak, 1.0F + 0.01F * static_cast<float>(i), 0.0F, 80.0F);
    }
}

}  // namespace soak
