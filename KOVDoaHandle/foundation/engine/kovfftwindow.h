// Window functions for spectra.
#ifndef KOVDOA5_KOVFFTWINDOW_H
#define KOVDOA5_KOVFFTWINDOW_H

#include <memory>

#include <KOVDoaHandle/foundation/engine/containers.h>
#include <KOVDoaHandle/foundation/engine/kovdoa5export.h>

// Shapes. Each is symmetric: coefficient i equals coefficient n - 1 - i, and the largest is 1, reached in the
// middle of an odd length. With u = 2 pi i / (n - 1) and r = 2 i / (n - 1) - 1 (from -1 to 1):
//   rectangular       1
//   Bartlett          1 - |r|, a triangle with both ends 0
//   Hamming           0.54 - 0.46 cos u
//   Blackman          0.42 - 0.5 cos u + 0.08 cos 2u
//   Blackman-Harris   0.35875 - 0.48829 cos u + 0.14128 cos 2u - 0.01168 cos 3u: side lobes below -92 dB
//   Nuttall           0.3635819 - 0.4891775 cos u + 0.1365995 cos 2u - 0.0106411 cos 3u: below -98 dB
//   flat top          0.21557895 - 0.41663158 cos u + 0.277263158 cos 2u - 0.083578947 cos 3u
//                     + 0.006947368 cos 4u: reads a tone's level to 0.01 dB wherever it lies between two bins
//   Kaiser            I0(a sqrt(1 - r^2)) / I0(a); a = beta >= 0, 0 is rectangular
//   Tukey             flat, with cosine flanks over the part a (0 ... 1) of the length; 0 is rectangular, 1 is Hann
//   Gaussian          exp(-r^2 / (2 a^2)); a = standard deviation as a part of half the length, > 0
//   Hann              0.5 - 0.5 cos u: both ends are 0
// F. J. Harris, "On the use of windows for harmonic analysis with the discrete Fourier transform", Proceedings of
// the IEEE 66 (1978); A. H. Nuttall, "Some windows with very good sidelobe behavior", IEEE Transactions ASSP 29
// (1981); flat top: G. D'Antona, A. Ferrero, "Digital signal processing for measurement systems" (2006).
enum FFTWindowType : int {
    FFT_WINDOW_RECTANGULAR = 0,
    FFT_WINDOW_BARTLETT = 1,
    FFT_WINDOW_HAMMING = 2,
    FFT_WINDOW_BLACKMAN = 3,
    FFT_WINDOW_BLACKMAN_HARRIS = 4,
    FFT_WINDOW_NUTTALL = 5,
    FFT_WINDOW_FLAT_TOP = 6,
    FFT_WINDOW_KAISER = 7,
    FFT_WINDOW_TUKEY = 8,
    FFT_WINDOW_GAUSSIAN = 9,
    FFT_WINDOW_HANN = 10
};

// The coefficients of one window, computed at construction (in double precision, then rounded).
// Threads: unchanging after construction, so any number may read.
class KOVDOA5_EXPORT KOVFFTWindow
{
public:
    //   n        number of coefficients; 1 gives the single coefficient 1, 0 and less give none
    //   type     shape; any other number gives the rectangular window
    //   a        parameter of the Kaiser, Tukey and Gaussian windows, unused by the others. A NaN, a negative
    //            one, and 0 for the Gaussian, give the rectangular window; the Kaiser's is limited to 500, the
    //            Tukey's to 1
    //   b, c     unused by these shapes
    // Throws std::bad_alloc when memory runs out.
    KOVFFTWindow(int n, FFTWindowType type, float a, float b, float c);
    ~KOVFFTWindow();
    KOVFFTWindow(const KOVFFTWindow&) = delete;
    KOVFFTWindow& operator=(const KOVFFTWindow&) = delete;

    // The n coefficients in sample order; owned by the window and valid as long as it lives. len is 0 where n is
    // negative.
    vec_fp32* data();

private:
    class Private;
    std::unique_ptr<Private> d;
};

#endif
