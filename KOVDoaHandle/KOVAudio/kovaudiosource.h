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

class KOVDOA_EXPORT KOVAudioSource : public QObject, public IKOVServerReaderSource
{
    Q_OBJECT

public:
    KOVAudioSource(const QString& name, int sampleRate, int channels);
    ~KOVAudioSource() override;

    void appendData(KOVAudioBuffer buffer);
    QVariant readData() override;
    void clearData();

    void startSave(const QString& path);
    void stopSave();
    bool isSaving();

public Q_SLOTS:
    void onDataReady() override;

Q_SIGNALS:
    void readyRead();

private:
    class KOVDOA_LOCAL Private;
    std::unique_ptr<Private> d;
};

#endif
