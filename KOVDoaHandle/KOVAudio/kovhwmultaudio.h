// The multichannel audio reader: plays a recording of the microphone array to the sources that hosts create.
#ifndef KOVDOA_KOVHWMULTAUDIO_H
#define KOVDOA_KOVHWMULTAUDIO_H

#include <QtCore/QObject>
#include <QtCore/QString>

#include <memory>

#include <KOVDoaHandle/KOVAudio/kovserver.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

struct hw_data_info;

class KOVDOA_EXPORT KOVHwMultAudio : public QObject, public IKOVCoreServer, public IKOVServerReader
{
    Q_OBJECT

public:
    KOVHwMultAudio();
    explicit KOVHwMultAudio(int channels);
    ~KOVHwMultAudio() override;

    bool isWorking() override;
    IKOVServerReaderSource* createReaderSource(const QString& name) override;
    void releaseReaderSource(IKOVServerReaderSource* source) override;
    void start() override;
    void close() override;

    bool init(const char* folder);
    void setCurrentIndex(int index);
    long long getTotalDataFrame();
    long long getTotalDataSize();

    void GPIO_1_Set(bool on);
    void GPIO_2_Set(bool on);
    void GPIO_3_Set(bool on);
    void GPIO_4_Set(bool on);
    void GPIO_Analog_Set(bool on);
    void GPIO_LED_Set(bool on);
    void GPIO_MIC_Set(bool on);
    bool GPIO_1_Get();
    bool GPIO_2_Get();
    bool GPIO_3_Get();
    bool GPIO_4_Get();
    bool GPIO_Analog_Get();
    bool GPIO_LED_Get();
    bool GPIO_MIC_Get();
    bool SetLast64ChannelMode(bool on);
    bool ModeOverFreqConfig(bool on);
    bool ModeFakeDataConfig(bool on);
    bool ModeBclkOutConfig(bool on);
    void ModeAnalogClkOutConfig(bool on);
    void ModeDigitalAnalogSwitch(bool on);
    void read_pcm_data(void* buffer, long long size);
    int get_fifo_data_size(hw_data_info* info);

private:
    class KOVDOA_LOCAL Private;
    std::shared_ptr<Private> d;
};

#endif
