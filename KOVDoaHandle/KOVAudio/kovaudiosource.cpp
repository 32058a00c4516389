// The source is the Qt face of its queue.
#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>

#include <optional>
#include <utility>

#include <KOVDoaHandle/KOVAudio/kovaudiosource_p.h>
#include <KOVDoaHandle/foundation/kovlog_p.h>

namespace {

// The source that this thread is appending to: the wake that belongs to an append is told from one that a host asks
// for by the thread it comes on, since both arrive through the same virtual slot.
thread_local const KOVAudioSource* appendingTo = nullptr;

class AppendScope
{
public:
    explicit AppendScope(const KOVAudioSource* source) : m_before(std::exchange(appendingTo, source)) {}
    ~AppendScope() { appendingTo = m_before; }
    AppendScope(const AppendScope&) = delete;
    AppendScope& operator=(const AppendScope&) = delete;

private:
    const KOVAudioSource* m_before;
};

}  // namespace

// Rate and channel count describe the stream to a host's own derived class; the queue needs neither.
KOVAudioSource::KOVAudioSource(const QString& name, int /*sampleRate*/, int /*channels*/)
    : QObject(nullptr), d(std::make_unique<Private>(name))
{
}

KOVAudioSource::~KOVAudioSource()
{
    d->queue->close();
    if (isSaving()) {
        stopSave();
    }
    d->queue->clear();
}

void KOVAudioSource::appendData(KOVAudioBuffer buffer)
{
    if (d->queue->append(buffer)) {
        const AppendScope scope(this);
        onDataReady();
    }
}

QVariant KOVAudioSource::readData()
{
    const std::optional<KOVAudioBuffer> block = d->queue->take();
    return block ? QVariant::fromValue(*block) : QVariant();
}

void KOVAudioSource::clearData()
{
    d->queue->clear();
}

void KOVAudioSource::onDataReady()
{
    if (appendingTo == this) {
        d->queue->wakeForAppended();
    } else {
        d->queue->wakeAll();
    }
}

void KOVAudioSource::startSave(const QString& /*path*/)
{
    d->isSaving = true;
}

void KOVAudioSource::stopSave()
{
    KOVDOA_DEBUG("kovaudiosource") << "save audio complete";
    d->isSaving = false;
}

bool KOVAudioSource::isSaving()
{
    return d->isSaving;
}
