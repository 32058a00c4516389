/* Sampling-rate conversion, as an opaque handle. C99 and C++.
 *
 *     KOVAudioReSample* resampler = createReSampleHandle(96000, 48000, 0.0f, 0, 1);
 *     AudioReSampleDoReSample(resampler, in, out);   // for each block of the stream
 *     destoryReSampleHandle(resampler);
 *
 * Handles and vectors are not checked, unless said otherwise. Threads: one at a time per handle.
 */
#ifndef KOVDOA_API_RESAMPLER_H
#define KOVDOA_API_RESAMPLER_H

#include <KOVDoaHandle/api/handles.h>
#include <KOVDoaHandle/foundation/engine/containers.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Creates a converter.
 *   inputRate, outputRate  Hz;  gain  dB of amplitude
 *   rmAliasing             1: a 10 Hz high-pass comes first; any other number: not
 *   rmDC                   1: then a low-pass at the output rate; any other number: not
 * (The names and the filters are crossed; that is agreed with the host and kept. Both filters are designed for 96 kHz.)
 * The caller frees the handle with destoryReSampleHandle. */
KOVDOA_EXPORT KOVAudioReSample* createReSampleHandle(int inputRate, int outputRate, float gain,
                                                     int rmAliasing, int rmDC);

/* Frees a converter; a null handle is ignored. (The spelling is the boundary's.) */
KOVDOA_EXPORT void destoryReSampleHandle(KOVAudioReSample* resampler);

/* Settings; they take effect with the next block. The flags are read as 0 or 1. Unlike at creation, every number
 * but 0 switches on. */
KOVDOA_EXPORT float AudioReSampleGetGain(KOVAudioReSample* resampler);
KOVDOA_EXPORT void AudioReSampleSetGain(KOVAudioReSample* resampler, float gain);
KOVDOA_EXPORT int AudioReSampleGetRmAliasingEnable(KOVAudioReSample* resampler);
KOVDOA_EXPORT void AudioReSampleSetRmAliasingEnable(KOVAudioReSample* resampler, int enable);
KOVDOA_EXPORT int AudioReSampleGetRmDCEnable(KOVAudioReSample* resampler);
KOVDOA_EXPORT void AudioReSampleSetRmDCEnable(KOVAudioReSample* resampler, int enable);

/* Forgets the stream so far: both filters start afresh. */
KOVDOA_EXPORT void AudioReSampleResetFilter(KOVAudioReSample* resampler);

/* Converts one block of at most 409600 samples (of more, only those are taken): out[k] is the filtered sample at or
 * before k * inputRate / outputRate, times the gain. Elements of `out` beyond the block's end keep what they held.
 * Both vectors stay the caller's; they may be the same. */
KOVDOA_EXPORT void AudioReSampleDoReSample(KOVAudioReSample* resampler, vec_fp32* in, vec_fp32* out);

/* The same without filters, gain, handle, and limit to the block's length. The vectors must not be the same. */
KOVDOA_EXPORT void AudioFastReSample(vec_fp32* in, int inputRate, vec_fp32* out, int outputRate);

#ifdef __cplusplus
}
#endif

#endif
