// Finds short bursts in one channel of a multichannel signal and cuts them out of all.
#ifndef KOVDOA_KOVPLUSEDETECTION_H
#define KOVDOA_KOVPLUSEDETECTION_H

#include <memory>

#include <KOVDoaHandle/foundation/kovdoaexport.h>

class KOVDOA_EXPORT KOVPluseDetection
{
public:
    KOVPluseDetection(int rate, int segmentLength, int channels);
    ~KOVPluseDetection();
    KOVPluseDetection(const KOVPluseDetection&) = delete;
    KOVPluseDetection& operator=(const KOVPluseDetection&) = delete;

    void FeedSignal(float** channels, int n, int detectChannel);
    bool GetPulse(float** out, int& count);
    void FlushSignal();
    void FlushPulse();
    void setPulseChannel(int channel);
    int pulseChannel();

    void KOV_Abs(float* out, int n);
    void KOV_Rescale(float* x, int n);
    void KOV_STE(float* x, int n, float& energy);
    void KOV_Filter(float* x, int n, float* a, float* b, int order);
    void KOV_NoiseFloor(float* x, int n, float& floor);
    void KOV_MaxPulseSegment(float* env, int n);
    float KOV_FindMax(float* x, int n, int& index);
    float KOV_FindMin(float* x, int n, int& index);
    void KOV_DetectPulse();
    void KOV_Hilbert(float* x, int n);

private:
    class KOVDOA_LOCAL Private;
    std::unique_ptr<Private> d;
};

#endif
