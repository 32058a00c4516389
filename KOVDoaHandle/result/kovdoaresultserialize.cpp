// Recording and playback. A load parses the file in place, window by window; only the maps and spectra are copied,
// into the cache.
//
// What the host may poll during a load is atomic or under the mutex. A worker leaves through the gate, and
// the destructor waits there, so that an object may be destroyed at any time.
#include <KOVDoaHandle/result/kovdoaresultserialize.h>

#include <QtCore/QVariant>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <KOVDoaHandle/foundation/kovlog_p.h>
#include <KOVDoaHandle/imaging/engmapresult.h>
#include <KOVDoaHandle/result/cachecontainers_p.h>
#include <KOVDoaHandle/result/kovmemorymap.h>
#include <KOVDoaHandle/result/loadgate_p.h>
#include <KOVDoaHandle/result/recordingfile_p.h>
#include <KOVDoaHandle/result/recordingstream_p.h>
#include <KOVDoaHandle/result/resultcursor_p.h>
#include <KOVDoaHandle/result/resultformat_p.h>
#include <KOVDoaHandle/result/resultnumbers_p.h>
#include <KOVDoaHandle/result/resultrecord_p.h>
#include <KOVDoaHandle/result/resultwriter_p.h>
#include <KOVDoaHandle/runtime/kovrttimer.h>
#include <KOVDoaHandle/runtime/kovthread.h>

using KOVResult::ByteCursor;

namespace {

const char source[] = "kovdoaresultserialize";

// Frames may take this much more than the file itself, so that a file of tiny records under a header of huge
// sizes cannot fill the disk with empty maps. In a sound file the frames are about as large as their records.
constexpr std::uint64_t storageAllowance = std::uint64_t{64} * 1024 * 1024;

// Header lines are logged; a sound header has 25. More, or longer ones, only in a damaged file.
constexpr int maxLoggedLines = 100;
constexpr std::size_t maxLoggedText = 200;

QByteArray loggable(std::string_view text)
{
    return QByteArray(text.data(), static_cast<int>(std::min(text.size(), maxLoggedText)));
}

std::string_view view(const QByteArray& data)
{
    return {data.constData(), static_cast<std::size_t>(data.size())};
}

QByteArray byteArray(std::string_view text)
{
    return text.data() == nullptr ? QByteArray() : QByteArray(text.data(), static_cast<int>(text.size()));
}

bool contains(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

int spectrumLength(int fftLen)
{
    return fftLen / 2 + 1;
}

}  // namespace

class KOVDoaResultSerialize::Private
{
public:
    struct FrameDeleter
    {
        Private* owner;
        void operator()(EngMapResult* frame) const { owner->destroyFrame(frame); }
    };
    using OwnedFrame = std::unique_ptr<EngMapResult, FrameDeleter>;

    struct KeepPosition
    {
        ByteCursor& cursor;
        std::size_t& position;
        ~KeepPosition() { position = cursor.position(); }
    };

    explicit Private(const QString& cachePath) : cache(cachePath) {}

    bool beginFile();
    void load(const QString& path);
    void loadRecords(float& totalMs, KOVRtTimer& timer);
    void readVersion(ByteCursor& cursor);
    void applyVersionLine(std::string_view key, std::string_view value);
    void readHeader(ByteCursor& cursor) const;
    bool readRecord(ByteCursor& cursor);
    OwnedFrame createFrame(std::uint64_t storageLimit);
    void destroyFrame(EngMapResult* frame);
    int frameCount();

    // Runs a parsing step on the bytes from the read position on, and keeps the position it ends at.
    template <typename Step>
    auto parse(const QByteArray& data, Step step)
    {
        ByteCursor cursor(view(data), readPos);
        const KeepPosition keep{cursor, readPos};
        return step(cursor);
    }

    // Writing.
    QString filePath;
    QByteArray missingHeader;  // for which the disk had no room so far
    int frameNumber = 0;
    std::string record;  // kept between frames for its memory

    // Reading.
    KOVMemoryMap cache;
    QString readPath;
    std::size_t readPos = 0;
    std::uint64_t storedBytes = 0;  // of the frames of this load
    std::shared_ptr<KOVResult::LoadGate> gate = std::make_shared<KOVResult::LoadGate>();
    std::mutex loadMutex;  // one load after the other

    // Polled by the host.
    std::atomic<int> resRows{64};
    std::atomic<int> resCols{48};
    std::atomic<int> imgRows{480};
    std::atomic<int> imgCols{640};
    std::atomic<int> fftLen{1024};
    std::atomic<bool> openComplete{false};
    std::mutex mutex;  // guards the two below
    std::vector<EngMapResult*> frames;
    QString version;
};

// ---- Writing ----

KOVDoaResultSerialize::KOVDoaResultSerialize(const QString& cachePath)
    : d(std::make_unique<Private>(cachePath.isEmpty() ? QStringLiteral("./cache/") : cachePath))
{
}

KOVDoaResultSerialize::~KOVDoaResultSerialize()
{
    d->gate->stopAndWait();
    for (EngMapResult* frame : d->frames) {
        d->destroyFrame(frame);
    }
}

void KOVDoaResultSerialize::startSave(const QString& path, int resRows, int resCols, int imgRows, int imgCols,
                                      int fftLen)
{
    d->resRows = resRows;
    d->resCols = resCols;
    d->imgRows = imgRows;
    d->imgCols = imgCols;
    d->fftLen = fftLen;
    d->filePath = path;

    d->missingHeader = KOVResult::headerText({resRows, resCols, imgRows, imgCols, fftLen}).toLocal8Bit();
    d->beginFile();
}

// False while there is no room for the header: records without one could not be read.
bool KOVDoaResultSerialize::Private::beginFile()
{
    if (!missingHeader.isEmpty() && KOVResult::startFile(filePath, missingHeader)) {
        missingHeader.clear();
    }
    return missingHeader.isEmpty();
}

void KOVDoaResultSerialize::Save(EngMapResult* result)
{
    // Counted even when the file turns out to be unusable, so that a gap in the numbers tells of lost frames.
    ++d->frameNumber;
    if (!d->beginFile()) {
        return;
    }
    d->record.clear();
    KOVResult::appendRecord(d->record, d->frameNumber, *result);
    KOVResult::appendToFile(d->filePath, d->record);
}

// ---- Loading ----

void KOVDoaResultSerialize::openResultFile(const QString& path)
{
    d->openComplete = false;
    const auto gate = d->gate;
    gate->enter();
    KOVThread* const thread = KOVThread::run(
        [self = d.get(), path, gate](KOVThreadInfo*) {
            self->load(path);
            gate->leave();
        },
        QVariant(), true, QStringLiteral("KOVThread"));
    if (!thread->isRunning() && !thread->isFinished()) {
        KOVDOA_DEBUG(source) << "no thread to load the file";
        delete thread;
        d->openComplete = true;
        gate->leave();
    }
}

void KOVDoaResultSerialize::Private::load(const QString& path)
{
    const std::lock_guard lock(loadMutex);
    KOVRtTimer timer(1'000'000);
    float totalMs = 0.0F;
    openComplete = false;
    readPath = path;
    try {
        loadRecords(totalMs, timer);
    } catch (const std::exception& error) {
        // Memory, as a rule. What was read before stays.
        KOVDOA_DEBUG(source) << "stop reading:" << error.what();
    }
    totalMs += timer.timeMs();

    // From here on the host may use the frames, so nothing of the object is looked at any more.
    const qint64 frameTotal = frameCount();
    openComplete = true;
    constexpr qint64 usualFrameBytes = 4 * 4256;
    KOVDOA_DEBUG(source) << "load data success, use memory =" << frameTotal * usualFrameBytes / 1000 << "KB";
    KOVDOA_DEBUG(source) << "use all time =" << totalMs << "ms";
}

void KOVDoaResultSerialize::Private::loadRecords(float& totalMs, KOVRtTimer& timer)
{
    KOVResult::RecordingStream stream(readPath);
    KOVDOA_DEBUG(source) << "file size =" << static_cast<qint64>(stream.fileSize())
                         << ", time =" << timer.timeMs() << "ms";

    storedBytes = 0;
    ByteCursor cursor(stream);
    readVersion(cursor);
    readHeader(cursor);
    totalMs += timer.timeMs();
    timer.reset();

    while (!gate->stopRequested() && readRecord(cursor)) {
        const float recordMs = timer.timeMs();
        totalMs += recordMs;
        KOVDOA_LOGGER(source).debug("read data result ok, use time = %g ms", static_cast<double>(recordMs));
        timer.reset();
    }
    readPos = cursor.position();
}

void KOVDoaResultSerialize::Private::readVersion(ByteCursor& cursor)
{
    if (!contains(cursor.line(), KOVResult::fileInfoStart)) {
        return;
    }
    for (int lines = 0; !cursor.atEnd() && !gate->stopRequested(); ++lines) {
        const std::string_view line = cursor.line();
        if (contains(line, KOVResult::fileInfoEnd)) {
            break;
        }
        const std::size_t keyEnd = std::min(line.find(':'), line.size());
        const std::string_view key = line.substr(0, keyEnd);
        const std::string_view value = line.substr(std::min(keyEnd + 1, line.size()));
        if (lines < maxLoggedLines) {
            KOVDOA_DEBUG(source) << loggable(key) << loggable(value);
        }
        if (keyEnd < line.size()) {
            applyVersionLine(key, value);
        }
    }
}

void KOVDoaResultSerialize::Private::applyVersionLine(std::string_view key, std::string_view value)
{
    if (contains(key, "VERSION")) {
        const QString text = QString::fromLocal8Bit(value.data(), static_cast<int>(value.size()));
        const std::lock_guard lock(mutex);
        version = text;
    }
    const std::pair<std::string_view, std::atomic<int>*> numbers[] = {
        {"RESROW", &resRows}, {"RESCOL", &resCols}, {"IMGROW", &imgRows},
        {"IMGCOL", &imgCols}, {"FFTLEN", &fftLen},
    };
    for (const auto& [name, number] : numbers) {
        if (contains(key, name)) {
            *number = KOVResult::readInt(value);
        }
    }
}

void KOVDoaResultSerialize::Private::readHeader(ByteCursor& cursor) const
{
    if (!contains(cursor.line(), KOVResult::structInfoStart)) {
        return;
    }
    // The switches are told, not obeyed: a record says itself which fields it has.
    for (int lines = 0; !cursor.atEnd() && !gate->stopRequested(); ++lines) {
        const std::string_view line = cursor.line();
        if (lines < maxLoggedLines) {
            KOVDOA_DEBUG(source) << loggable(line);
        }
        if (contains(line, KOVResult::structInfoEnd)) {
            break;
        }
    }
    KOVDOA_DEBUG(source) << "----------";
}

bool KOVDoaResultSerialize::Private::readRecord(ByteCursor& cursor)
{
    const std::string_view line = cursor.line();
    if (!contains(line, KOVResult::recordStart)) {
        return false;
    }
    const std::uint64_t storageLimit = cursor.size() + storageAllowance;
    OwnedFrame frame = createFrame(storageLimit);
    if (frame == nullptr) {
        return false;
    }
    const std::string_view number = line.substr(std::min(KOVResult::recordStart.size(), line.size()));
    KOVDOA_LOGGER(source).debug("data Index = %d", KOVResult::readInt(number));

    const auto maxPeaks = static_cast<std::size_t>((storageLimit - storedBytes) / sizeof(TargetPoint));
    const bool isWhole = KOVResult::readFields(cursor, *frame, maxPeaks);
    storedBytes += frame->peaks.size() * sizeof(TargetPoint);
    {
        const std::lock_guard lock(mutex);
        frames.push_back(frame.get());
    }
    frame.release();
    if (!isWhole) {
        KOVDOA_DEBUG(source) << "more peaks than the file can hold, stop reading";
        return false;
    }
    KOVDOA_LOGGER(source).debug("----------");
    return true;
}

// A frame of the header's sizes, counted in storedBytes. Null, with one line in the log, when they are absurd
// or the cache is exhausted.
KOVDoaResultSerialize::Private::OwnedFrame KOVDoaResultSerialize::Private::createFrame(
    std::uint64_t storageLimit)
{
    const int rows = resRows;
    const int cols = resCols;
    const int bins = spectrumLength(fftLen);
    const std::uint64_t mapBytes = KOVResult::elementBytes(rows, cols);
    const std::uint64_t spectrumBytes = KOVResult::elementBytes(1, bins);
    OwnedFrame frame(nullptr, FrameDeleter{this});
    if (mapBytes > KOVResult::maxContainerBytes || spectrumBytes > KOVResult::maxContainerBytes) {
        KOVDOA_DEBUG(source) << "energy map of" << rows << "x" << cols << "or spectrum of" << bins
                             << "bins is too large, stop reading";
        return frame;
    }
    const std::uint64_t rowPointerBytes =
        mapBytes > 0 ? static_cast<std::uint64_t>(rows) * sizeof(float*) : 0;
    const std::uint64_t frameBytes = sizeof(EngMapResult) + sizeof(mat2d_fp32) + sizeof(vec_fp32) + mapBytes +
                                     rowPointerBytes + spectrumBytes;
    if (storedBytes + frameBytes > storageLimit) {
        KOVDOA_DEBUG(source) << "frames take far more room than the file, stop reading";
        return frame;
    }
    frame.reset(new EngMapResult);
    frame->ResEngMap = KOVResult::createCachedMatrix(cache, rows, cols);
    frame->PowerSpec = KOVResult::createCachedVector(cache, bins);
    if (frame->ResEngMap == nullptr || frame->PowerSpec == nullptr) {
        KOVDOA_DEBUG(source) << "no room in the cache, stop reading";
        frame.reset();
        return frame;
    }
    storedBytes += frameBytes;
    return frame;
}

void KOVDoaResultSerialize::Private::destroyFrame(EngMapResult* frame)
{
    KOVResult::destroyCachedMatrix(cache, frame->ResEngMap);
    KOVResult::destroyCachedVector(cache, frame->PowerSpec);
    delete frame;
}

// ---- What the host asks for ----

bool KOVDoaResultSerialize::IsOpenFileComplete()
{
    return d->openComplete;
}

int KOVDoaResultSerialize::getResultFrame()
{
    return d->frameCount();
}

int KOVDoaResultSerialize::Private::frameCount()
{
    const std::lock_guard lock(mutex);
    return static_cast<int>(frames.size());
}

int KOVDoaResultSerialize::getResRows()
{
    return d->resRows;
}

int KOVDoaResultSerialize::getResCols()
{
    return d->resCols;
}

int KOVDoaResultSerialize::getImgRows()
{
    return d->imgRows;
}

int KOVDoaResultSerialize::getImgCols()
{
    return d->imgCols;
}

int KOVDoaResultSerialize::getFFTLen()
{
    return d->fftLen;
}

QString KOVDoaResultSerialize::getFileVersion()
{
    const std::lock_guard lock(d->mutex);
    return d->version;
}

EngMapResult* KOVDoaResultSerialize::getResultFromIndex(int index)
{
    const std::lock_guard lock(d->mutex);
    if (index < 0 || static_cast<std::size_t>(index) >= d->frames.size()) {
        return nullptr;
    }
    return d->frames[static_cast<std::size_t>(index)];
}

// ---- The steps of a load, one by one ----

QByteArray KOVDoaResultSerialize::getLine(QByteArray& data)
{
    return d->parse(data, [](ByteCursor& cursor) { return byteArray(cursor.line()); });
}

QByteArray KOVDoaResultSerialize::getLine(QByteArray& data, int len)
{
    const auto count = static_cast<std::size_t>(std::max(len, 0));
    return d->parse(data, [count](ByteCursor& cursor) { return byteArray(cursor.bytes(count)); });
}

void KOVDoaResultSerialize::unpackVersion(QByteArray& data)
{
    d->parse(data, [this](ByteCursor& cursor) { d->readVersion(cursor); });
}

void KOVDoaResultSerialize::unpackHeader(QByteArray& data)
{
    d->parse(data, [this](ByteCursor& cursor) { d->readHeader(cursor); });
}

bool KOVDoaResultSerialize::unpackResult(QByteArray& data)
{
    return d->parse(data, [this](ByteCursor& cursor) { return d->readRecord(cursor); });
}

mat2d_fp32* KOVDoaResultSerialize::my_create_mat2d_fp32(int rows, int cols)
{
    return KOVResult::createCachedMatrix(d->cache, rows, cols);
}

vec_fp32* KOVDoaResultSerialize::my_create_vec_fp32(int len)
{
    return KOVResult::createCachedVector(d->cache, len);
}

void KOVDoaResultSerialize::my_destroy_mat2d_fp32(mat2d_fp32* matrix)
{
    KOVResult::destroyCachedMatrix(d->cache, matrix);
}

void KOVDoaResultSerialize::my_destroy_vec_fp32(vec_fp32* vector)
{
    KOVResult::destroyCachedVector(d->cache, vector);
}
