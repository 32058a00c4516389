// The analyser: what is locked by whom, and the order of the steps of a poll.
#include <KOVDoaHandle/diagnostics/kovprpdprocess.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

#include <KOVDoaHandle/diagnostics/dischargefilters_p.h>
#include <KOVDoaHandle/diagnostics/kovblas.h>
#include <KOVDoaHandle/diagnostics/mirroredring_p.h>
#include <KOVDoaHandle/diagnostics/phasetracker_p.h>
#include <KOVDoaHandle/diagnostics/prpdfeatures_p.h>
#include <KOVDoaHandle/diagnostics/prpdgeometry_p.h>
#include <KOVDoaHandle/diagnostics/prpdpattern_p.h>
#include <KOVDoaHandle/diagnostics/prpdspectrum_p.h>
#include <KOVDoaHandle/diagnostics/prpdvotes_p.h>
#include <KOVDoaHandle/diagnostics/supportvectormodel_p.h>

using KOVPrivate::MainsGeometry;

static_assert(sizeof(KOVPrpdProcess) == sizeof(void*), "hosts rely on the layout");

namespace {

const char defaultModelFolder[] = "/sdcard/workdir/";

// The whole of a span must lie in the ring however far the newest sample is beyond the last multiple of the
// alignment.
static_assert(KOVPrivate::largestSpan + KOVPrivate::mains50.alignment + 1 <
              KOVPrivate::MirroredRing::capacity);

const MainsGeometry& mainsOf(PddMode mode)
{
    return mode == PDD_MODE_60HZ ? KOVPrivate::mains60 : KOVPrivate::mains50;
}

}  // namespace

// Three locks, always taken in this order:
//   poll   everything that a poll works on: pattern, tracker, votes, record. Held for a whole poll, but never
//          waited for by a feeding thread.
//   feed   the filters
//   ring   the ring; a poll holds it just while it copies the span
class KOVPrpdProcess::Private
{
public:
    explicit Private(const std::string& folder);

    const MainsGeometry& mains() const { return mainsOf(mode); }

    void feed(float* samples, int n);
    void store(const float* samples, int n);
    bool hasSpan(const MainsGeometry& mains);
    void copySpan(const MainsGeometry& mains);
    bool getPdd(const MainsGeometry& mains, float* out, PddType& type);
    void buildPattern(const MainsGeometry& mains, float* out, PddType& type);
    bool update();
    void classify();
    void reset();

    std::atomic<PddMode> mode = PDD_MODE_50HZ;

    std::mutex pollMutex;
    std::mutex feedMutex;
    std::mutex ringMutex;

    KOVPrivate::MirroredRing ring;

    KOVPrivate::DischargeFilters filters;
    bool bandSelected = true;
    int bandValue = 40000;
    float blockLevel = 0.0F;  // of the latest block; for whoever looks at the object in a debugger

    std::array<float, KOVPrivate::largestSpan> work{};
    std::array<float, KOVPrivate::largestEnvelope> envelope{};
    std::array<float, KOVPrivate::largestFrame> frame{};
    KOVPrivate::PhaseTracker tracker;
    KOVPrivate::PrpdSpectrum spectrum;
    KOVPrivate::PrpdFeatures features;
    // Only the second decides. The first belongs to the other input vector and is kept as hosts deliver both
    // files.
    KOVPrivate::SupportVectorModel halvesModel;
    KOVPrivate::SupportVectorModel varianceModel;
    KOVPrivate::PrpdVotes votes;
    PRPDResult result = KOVPrivate::emptyPrpdResult();
};

KOVPrpdProcess::Private::Private(const std::string& folder)
    : halvesModel(KOVPrivate::SupportVectorModel::load(folder + "/SVM1.txt")),
      varianceModel(KOVPrivate::SupportVectorModel::load(folder + "/SVM2.txt"))
{
}

void KOVPrpdProcess::Private::feed(float* samples, int n)
{
    // Held until the block is in the ring, so that a reset falls between blocks.
    const std::lock_guard lock(feedMutex);
    blockLevel = KOVPrivate::blockLevel(samples, n);
    store(filters.run(KOVPrivate::bandFor(bandSelected, bandValue), samples, n), n);
}

void KOVPrpdProcess::Private::store(const float* samples, int n)
{
    const std::lock_guard lock(ringMutex);
    ring.append(samples, n);
}

bool KOVPrpdProcess::Private::hasSpan(const MainsGeometry& mains)
{
    const std::lock_guard lock(ringMutex);
    return ring.total() >= mains.span;
}

// Copies the span, so that everything else goes without the lock. Its last sample is the second before a
// multiple of the alignment; the one extra sample is kept on purpose.
void KOVPrpdProcess::Private::copySpan(const MainsGeometry& mains)
{
    const std::lock_guard lock(ringMutex);
    const std::int64_t aligned = ring.total() / mains.alignment * mains.alignment;
    std::copy_n(ring.endingAt(aligned - 2, mains.span), mains.span, work.begin());
}

bool KOVPrpdProcess::Private::getPdd(const MainsGeometry& mains, float* out, PddType& type)
{
    if (!hasSpan(mains)) {
        return false;
    }
    buildPattern(mains, out, type);
    return true;
}

void KOVPrpdProcess::Private::buildPattern(const MainsGeometry& mains, float* out, PddType& type)
{
    type = PDD_TYPE_NONE;
    copySpan(mains);
    // Over the start of the span only, on purpose. Squares need no magnitudes.
    result.RMS = KOVPrivate::nextFloor(result.RMS, KOVBlas::Rms(work.data(), mains.measured, false));
    result.peak = std::min(KOVPrivate::largestMagnitude(work.data(), mains.measured), 1.0F);
    KOVPrivate::magnitudeBins(work.data(), envelope.data(), mains.bins());
    tracker.follow(envelope.data(), KOVPrivate::peakStandsOut(result.peak, result.RMS), mains);
    KOVPrivate::sumPages(envelope.data(), tracker.pageOffset(mains), mains, out);
}

bool KOVPrpdProcess::Private::update()
{
    const MainsGeometry& geometry = mains();
    PddType type = PDD_TYPE_NONE;
    const bool built = getPdd(geometry, frame.data(), type);
    const KOVPrivate::MainsLines lines = spectrum.analyse(frame.data(), geometry);
    result.F1 = lines.f1;
    result.F2 = lines.f2;
    if (!built) {
        return false;
    }
    if (!lines.phaseBound) {
        votes.cast(KOVPrivate::Discharge::Noise);
    } else if (lines.f1 > lines.f2) {
        // Corona starts in one half of the cycle only, so its pattern repeats with the mains, not with twice
        // the mains.
        votes.cast(KOVPrivate::Discharge::Corona);
    } else {
        features.calculate(frame.data());
        classify();
    }
    votes.publish(result);
    return true;
}

void KOVPrpdProcess::Private::classify()
{
    const float decision = varianceModel.decision(features.varianceVector.data());
    votes.cast(decision > 0.0F ? KOVPrivate::Discharge::Suspension : KOVPrivate::Discharge::AlongSurface);
}

void KOVPrpdProcess::Private::reset()
{
    result = KOVPrivate::emptyPrpdResult();
    votes.reset();
    tracker = {};
    const std::lock_guard feedLock(feedMutex);
    filters.reset();
    const std::lock_guard ringLock(ringMutex);
    ring.restart();
}

KOVPrpdProcess::KOVPrpdProcess(const char* dir)
    : d(std::make_unique<Private>(dir != nullptr ? dir : defaultModelFolder))
{
}

KOVPrpdProcess::~KOVPrpdProcess() = default;

void KOVPrpdProcess::setPddMode(PddMode mode)
{
    d->mode = mode;
}

PddMode KOVPrpdProcess::getPddMode()
{
    return d->mode;
}

int KOVPrpdProcess::pageLength()
{
    return d->mains().cycle;
}

int KOVPrpdProcess::pageNumber()
{
    return KOVPrivate::pageCount;
}

void KOVPrpdProcess::FeedAudio(float* samples, int n)
{
    if (samples != nullptr && n > 0) {
        d->feed(samples, n);
    }
}

void KOVPrpdProcess::audioInput(float* samples, int n)
{
    if (samples != nullptr && n > 0) {
        d->store(samples, n);
    }
}

bool KOVPrpdProcess::updatePdd()
{
    const std::lock_guard lock(d->pollMutex);
    return d->update();
}

PRPDResult KOVPrpdProcess::getPddFrameData(float* out, int capacity)
{
    const std::lock_guard lock(d->pollMutex);
    const int size = d->mains().frameSize();
    if (out != nullptr && capacity >= size) {
        std::copy_n(d->frame.begin(), size, out);
    }
    return d->result;
}

void KOVPrpdProcess::resetResult()
{
    const std::lock_guard lock(d->pollMutex);
    d->reset();
}

bool KOVPrpdProcess::checkPeak(float peak, float floor)
{
    return KOVPrivate::peakStandsOut(peak, floor);
}

void KOVPrpdProcess::getPddData(float* in, float* out, int n)
{
    KOVPrivate::binSums(in, out, n);
}

bool KOVPrpdProcess::getPdd(float* frame, PddType& type)
{
    const std::lock_guard lock(d->pollMutex);
    return d->getPdd(d->mains(), frame, type);
}

void KOVPrpdProcess::processPdd50Hz(float* frame, PddType& type)
{
    const std::lock_guard lock(d->pollMutex);
    d->buildPattern(KOVPrivate::mains50, frame, type);
}

void KOVPrpdProcess::processPdd60Hz(float* frame, PddType& type)
{
    const std::lock_guard lock(d->pollMutex);
    d->buildPattern(KOVPrivate::mains60, frame, type);
}

float KOVPrpdProcess::RBF(float* x, float* sv, float gamma, int dim)
{
    return KOVPrivate::radialBasis(x, sv, gamma, dim);
}

void KOVPrpdProcess::calculateFeatures()
{
    const std::lock_guard lock(d->pollMutex);
    d->features.calculate(d->frame.data());
}

void KOVPrpdProcess::checkPddType()
{
    const std::lock_guard lock(d->pollMutex);
    d->classify();
}
