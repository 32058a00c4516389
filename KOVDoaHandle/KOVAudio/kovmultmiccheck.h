// Self-test of the 208-microphone array.
#ifndef KOVDOA_KOVMULTMICCHECK_H
#define KOVDOA_KOVMULTMICCHECK_H

#include <memory>

#include <KOVDoaHandle/foundation/engine/containers.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

// What one test found, per channel. Plain data.
struct MicCheckResult
{
    bool flags[208];
    float values[208];
    float elapsed;
};

// The samples collected so far, and the transforms of the alignment test.
class KOVDOA_EXPORT KOVMultMicCheckPrivate
{
public:
    KOVMultMicCheckPrivate();
    ~KOVMultMicCheckPrivate();
    KOVMultMicCheckPrivate(const KOVMultMicCheckPrivate&) = delete;
    KOVMultMicCheckPrivate& operator=(const KOVMultMicCheckPrivate&) = delete;

    void fftforward(float* x, float out[][2]);
    void fftBackward(float in[][2], float* out);
    int gccphat(float* a, float* b);

    mat2d_fp32* samples;
    int fillCount;
};

class KOVDOA_EXPORT KOVMultMicCheck
{
public:
    KOVMultMicCheck();
    ~KOVMultMicCheck();
    KOVMultMicCheck(const KOVMultMicCheck&) = delete;
    KOVMultMicCheck& operator=(const KOVMultMicCheck&) = delete;

    bool fillAudio(short** data, int n);
    bool fillAudio(float** data, int n);
    MicCheckResult checkSame();
    MicCheckResult checkRMS();
    MicCheckResult checkXcorr();

private:
    std::unique_ptr<KOVMultMicCheckPrivate> d;
};

#endif
