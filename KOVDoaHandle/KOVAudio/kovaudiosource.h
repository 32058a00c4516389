// A bounded queue of audio blocks between one reader of a recording and its consumers.
#ifndef KOVDOA_KOVAUDIOSOURCE_H
#define KOVDOA_KOVAUDIOSOURCE_H

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QVariant>

#include <memory>

#include <KOVDoaHandle/KOVAudio/kovaudiobuffer.h>
#include <KOVDoaHandle/KOVAudio/kovserver.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

namespace KOVAudio {
class SourceList;
}

// Keeps at most 10 blocks, the oldest ones: what a slow consumer has no room for is dropped, counted and reported,
// and the producer never waits.
//
// Threads: any number of producers (appendData) and consumers (readData); every member may be called from any
// thread while the object lives. The destructor wakes those who wait in readData() and returns when they have left
// it; whoever deletes a source makes sure that nobody calls it afterwards.
// Timing: appendData() takes one short lock, copies a handle (no samples) and allocates nothing, except where it
// writes a log line.
class KOVDOA_EXPORT KOVAudioSource : public QObject, public IKOVServerReaderSource
{
    Q_OBJECT

public:
    //   name        for the log
    //   sampleRate  in Hz
    //   channels    number of channels of the blocks to come; they are not checked against it
    KOVAudioSource(const QString& name, int sampleRate, int channels);
    ~KOVAudioSource() override;

    // Appends a handle onto the block at the end of the queue, or drops it when 10 blocks wait: the 1st, 251st,
    // 501st ... refusal since construction is reported as a warning. Then calls onDataReady(), also after a
    // refusal. Does nothing while the object is being destroyed.
    void appendData(KOVAudioBuffer buffer);

    // Removes the oldest block and returns it as a QVariant of the meta-type "KOVAudioBuffer". When the queue is
    // empty it waits, at most 30 s, until somebody calls onDataReady(), which every append does, and then looks
    // once more. The variant is invalid when there still is nothing: after the time-out (reported as a warning),
    // when another consumer was faster, when onDataReady() was called without a block, when the source is going.
    QVariant readData() override;

    // Drops all blocks that wait.
    void clearData();

    // Saving is not part of this library: the flag is kept for hosts, the path is not used, nothing is written.
    void startSave(const QString& path);
    void stopSave();
    bool isSaving();

public Q_SLOTS:
    // Wakes every thread that waits in readData().
    void onDataReady() override;

Q_SIGNALS:
    // For hosts; the library never emits it.
    void readyRead();

private:
    friend class KOVAudio::SourceList;

    struct KOVDOA_LOCAL Private;
    std::unique_ptr<Private> d;
};

#endif
