// Window functions for spectra.
#ifndef KOVDOA5_KOVFFTWINDOW_H
#define KOVDOA5_KOVFFTWINDOW_H

#include <memory>

#include <KOVDoaHandle/foundation/engine/containers.h>
#include <KOVDoaHandle/foundation/engine/kovdoa5export.h>

enum FFTWindowType : int { FFT_WINDOW_RECTANGULAR = 0, FFT_WINDOW_HANN = 10 };

// The coefficients of one window, computed at construction.
class KOVDOA5_EXPORT KOVFFTWindow
{
public:
    KOVFFTWindow(int n, FFTWindowType type, float a, float b, float c);
    ~KOVFFTWindow();
    KOVFFTWindow(const KOVFFTWindow&) = delete;
    KOVFFTWindow& operator=(const KOVFFTWindow&) = delete;

    // The n coefficients in sample order; owned by the window and valid as long as it lives.
    vec_fp32* data();

private:
    class Private;
    std::unique_ptr<Private> d;
};

#endif
