// What a source keeps, for the array reader that feeds it.
#ifndef KOVDOA_KOVAUDIOSOURCE_P_H
#define KOVDOA_KOVAUDIOSOURCE_P_H

#include <QtCore/QString>

#include <atomic>
#include <memory>

#include <KOVDoaHandle/KOVAudio/audioqueue_p.h>
#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>

struct KOVAudioSource::Private
{
    explicit Private(const QString& name) : queue(std::make_shared<KOVAudio::AudioQueue>(name)) {}

    std::shared_ptr<KOVAudio::AudioQueue> queue;  // closed when the source goes
    std::atomic<bool> isSaving{false};
};

#endif
