// Sampling-rate conversion by picking samples, with optional filters before it.
#ifndef KOVDOA_KOVAUDIORESAMPLE_H
#define KOVDOA_KOVAUDIORESAMPLE_H

#include <memory>

#include <KOVDoaHandle/foundation/kovdoaexport.h>

class KOVDOA_EXPORT KOVAudioReSample
{
public:
    KOVAudioReSample(int inputRate, int outputRate, float gain, bool rmAliasing, bool rmDC);
    ~KOVAudioReSample();
    KOVAudioReSample(const KOVAudioReSample&) = delete;
    KOVAudioReSample& operator=(const KOVAudioReSample&) = delete;

    void doReSample(float* in, int inCount, float* out, int outCount);
    static void FastAudioReSample(float* in, int inRate, int inCount, float* out, int outRate, int outCount);

    float getGain();
    void setGain(float gain);
    bool getRmAliasingEnable();
    void setRmAliasingEnable(bool enable);
    bool getRmDCEnable();
    void setRmDCEnable(bool enable);
    void resetFilter();

private:
    class KOVDOA_LOCAL Private;
    std::unique_ptr<Private> d;
};

#endif
