// Makes ultrasound audible: shifts the band above a base frequency down to 0 Hz.
#ifndef KOVDOA_KOVSUPERHETERODYNE_H
#define KOVDOA_KOVSUPERHETERODYNE_H

#include <memory>

#include <KOVDoaHandle/foundation/kovdoaexport.h>

class KOVDOA_EXPORT KOVSuperHeterodyne
{
public:
    KOVSuperHeterodyne();
    ~KOVSuperHeterodyne();
    KOVSuperHeterodyne(const KOVSuperHeterodyne&) = delete;
    KOVSuperHeterodyne& operator=(const KOVSuperHeterodyne&) = delete;

    void init();
    void start();
    void stop();
    bool isStart();

    void feedSignal(short* data, int n);
    void feedSignal(float* data, int n);
    void feedSignal(float* data, int n, float gain);
    short* readAll(int& count);
    void flushBuffer();

    void setBaseFrequency(float frequency);
    float baseFrequency();
    void setVolume(float decibels);
    float getVolume();
    float getDecibel(float x);
    float rmsCalculate(float* x, int n);
    void setChannel(int channel);
    int channel();

private:
    class KOVDOA_LOCAL Private;
    std::unique_ptr<Private> d;
};

#endif
