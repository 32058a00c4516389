// The reader itself holds what hosts set; files, distribution and the worker's loop are pieces of their own.
#include <KOVDoaHandle/KOVAudio/kovhwmultaudio.h>

#include <QtCore/QVariant>

#include <mutex>
#include <utility>

#include <KOVDoaHandle/KOVAudio/arrayplayer_p.h>
#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>
#include <KOVDoaHandle/KOVAudio/sourcelist_p.h>
#include <KOVDoaHandle/KOVAudio/wavset_p.h>
#include <KOVDoaHandle/foundation/kovlog_p.h>
#include <KOVDoaHandle/runtime/kovthread.h>

using KOVAudio::ArrayPlayer;
using KOVAudio::SourceList;
using KOVAudio::WavSet;

namespace {

constexpr const char* source = "kovhwmultaudio";
constexpr int usualChannels = 208;
constexpr int usualSampleRateHz = 96'000;
constexpr int usualBlockSize = 1024;
constexpr int channelsPerFile = 8;

void runWorker(KOVThreadInfo& thread, ArrayPlayer& player)
{
    thread.Thread()->setLabel(QStringLiteral("hwAudioRd"));
    KOVDOA_DEBUG(source) << "audio file open success";
    player.run();
}

}  // namespace

struct KOVHwMultAudio::Private
{
    explicit Private(int channelCount)
        : channels(channelCount),
          recording(std::make_shared<WavSet>(channelCount, usualSampleRateHz, usualBlockSize))
    {
    }

    // What createReaderSource(), init() and the getters look at.
    std::shared_ptr<const WavSet> currentRecording()
    {
        const std::lock_guard lock(mutex);
        return recording;
    }

    const int channels;
    // Shared with the worker, which may outlive the reader.
    const std::shared_ptr<SourceList> sources = std::make_shared<SourceList>();

    std::mutex mutex;  // guards what follows
    std::shared_ptr<const WavSet> recording;
    std::shared_ptr<ArrayPlayer> player;  // null unless the reader works
    qint64 index = 0;
};

KOVHwMultAudio::KOVHwMultAudio() : KOVHwMultAudio(usualChannels) {}

KOVHwMultAudio::KOVHwMultAudio(int channels) : QObject(nullptr), d(std::make_unique<Private>(channels)) {}

KOVHwMultAudio::~KOVHwMultAudio() = default;

bool KOVHwMultAudio::isWorking()
{
    const std::lock_guard lock(d->mutex);
    return d->player != nullptr;
}

IKOVServerReaderSource* KOVHwMultAudio::createReaderSource(const QString& name)
{
    auto created = std::make_unique<KOVAudioSource>(name, d->currentRecording()->sampleRateHz(), d->channels);
    d->sources->add(*created);
    KOVDOA_DEBUG(source) << "KOVMultAudioReader::createAudioSource"
                         << "audio source created";
    return created.release();
}

void KOVHwMultAudio::releaseReaderSource(IKOVServerReaderSource* released)
{
    d->sources->remove(released);
}

void KOVHwMultAudio::start()
{
    const std::lock_guard lock(d->mutex);
    if (d->player != nullptr) {
        return;
    }
    d->player = std::make_shared<ArrayPlayer>(d->recording, d->sources, d->index);
    // The thread object may outlive its work for long, so the job gives its share of the recording back itself.
    auto job = [player = d->player](KOVThreadInfo* thread) mutable {
        const std::shared_ptr<ArrayPlayer> own = std::move(player);
        runWorker(*thread, *own);
    };
    KOVThread::run(std::move(job), QVariant(), true, QStringLiteral("KOVThread"));
}

void KOVHwMultAudio::close()
{
    const std::lock_guard lock(d->mutex);
    if (d->player != nullptr) {
        d->player->stop();
        d->player.reset();
    }
}

bool KOVHwMultAudio::init(const char* folder)
{
    if (d->channels < channelsPerFile) {
        return false;
    }
    const std::shared_ptr<const WavSet> former = d->currentRecording();
    const auto loaded = std::make_shared<WavSet>(d->channels, former->sampleRateHz(), former->blockSize());
    const bool isComplete = loaded->load(QString::fromUtf8(folder));
    const std::lock_guard lock(d->mutex);
    d->recording = loaded;
    return isComplete;
}

void KOVHwMultAudio::setCurrentIndex(int index)
{
    const std::lock_guard lock(d->mutex);
    d->index = index;
    if (d->player != nullptr) {
        d->player->setIndex(index);
    }
}

long long KOVHwMultAudio::getTotalDataFrame()
{
    return d->currentRecording()->totalFrames();
}

long long KOVHwMultAudio::getTotalDataSize()
{
    const std::shared_ptr<const WavSet> recording = d->currentRecording();
    return recording->totalFrames() * recording->blockSize();
}

void KOVHwMultAudio::GPIO_1_Set(bool /*on*/) {}

void KOVHwMultAudio::GPIO_2_Set(bool /*on*/) {}

void KOVHwMultAudio::GPIO_3_Set(bool /*on*/) {}

void KOVHwMultAudio::GPIO_4_Set(bool /*on*/) {}

void KOVHwMultAudio::GPIO_Analog_Set(bool /*on*/) {}

void KOVHwMultAudio::GPIO_LED_Set(bool /*on*/) {}

void KOVHwMultAudio::GPIO_MIC_Set(bool /*on*/) {}

bool KOVHwMultAudio::GPIO_1_Get()
{
    return true;
}

bool KOVHwMultAudio::GPIO_2_Get()
{
    return true;
}

bool KOVHwMultAudio::GPIO_3_Get()
{
    return true;
}

bool KOVHwMultAudio::GPIO_4_Get()
{
    return true;
}

bool KOVHwMultAudio::GPIO_Analog_Get()
{
    return true;
}

bool KOVHwMultAudio::GPIO_LED_Get()
{
    return true;
}

bool KOVHwMultAudio::GPIO_MIC_Get()
{
    return true;
}

bool KOVHwMultAudio::SetLast64ChannelMode(bool /*on*/)
{
    return true;
}

bool KOVHwMultAudio::ModeOverFreqConfig(bool /*on*/)
{
    return true;
}

bool KOVHwMultAudio::ModeFakeDataConfig(bool /*on*/)
{
    return true;
}

bool KOVHwMultAudio::ModeBclkOutConfig(bool /*on*/)
{
    return true;
}

void KOVHwMultAudio::ModeAnalogClkOutConfig(bool /*on*/) {}

void KOVHwMultAudio::ModeDigitalAnalogSwitch(bool /*on*/) {}

void KOVHwMultAudio::read_pcm_data(void* /*buffer*/, long long /*size*/) {}

int KOVHwMultAudio::get_fifo_data_size(hw_data_info* /*info*/)
{
    return 0;
}
