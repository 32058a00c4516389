// The resampler's plain exports: each converts its arguments and makes one call.
#include <KOVDoaHandle/KOVAudio/kovaudioresample.h>
#include <KOVDoaHandle/api/resampler.h>

KOVAudioReSample* createReSampleHandle(int inputRate, int outputRate, float gain, int rmAliasing, int rmDC)
{
    return new KOVAudioReSample(inputRate, outputRate, gain, rmAliasing == 1, rmDC == 1);
}

void destoryReSampleHandle(KOVAudioReSample* resampler)
{
    delete resampler;
}

float AudioReSampleGetGain(KOVAudioReSample* resampler)
{
    return resampler->getGain();
}

void AudioReSampleSetGain(KOVAudioReSample* resampler, float gain)
{
    resampler->setGain(gain);
}

int AudioReSampleGetRmAliasingEnable(KOVAudioReSample* resampler)
{
    return resampler->getRmAliasingEnable() ? 1 : 0;
}

void AudioReSampleSetRmAliasingEnable(KOVAudioReSample* resampler, int enable)
{
    resampler->setRmAliasingEnable(enable != 0);
}

int AudioReSampleGetRmDCEnable(KOVAudioReSample* resampler)
{
    return resampler->getRmDCEnable() ? 1 : 0;
}

void AudioReSampleSetRmDCEnable(KOVAudioReSample* resampler, int enable)
{
    resampler->setRmDCEnable(enable != 0);
}

void AudioReSampleResetFilter(KOVAudioReSample* resampler)
{
    resampler->resetFilter();
}

void AudioReSampleDoReSample(KOVAudioReSample* resampler, vec_fp32* in, vec_fp32* out)
{
    resampler->doReSample(in->data, in->len, out->data, out->len);
}

void AudioFastReSample(vec_fp32* in, int inputRate, vec_fp32* out, int outputRate)
{
    KOVAudioReSample::FastAudioReSample(in->data, inputRate, in->len, out->data, outputRate, out->len);
}
