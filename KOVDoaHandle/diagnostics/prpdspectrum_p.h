// How strongly a pattern repeats with the mains.
#ifndef KOVDOA_PRPDSPECTRUM_P_H
#define KOVDOA_PRPDSPECTRUM_P_H

#include <array>

#include <KOVDoaHandle/diagnostics/prpdgeometry_p.h>
#include <KOVDoaHandle/foundation/fftplan_p.h>

namespace KOVPrivate {

// A frame has ten pages that follow the mains, so bin 10 of its spectrum is the mains frequency and bin 20
// twice it.
struct MainsLines
{
    float f1;         // amplitude at the mains frequency; NaN or infinite when the frame is not finite
    float f2;         // and at twice the mains frequency
    bool phaseBound;  // the multiples of the mains frequency stand out of the rest
};

class PrpdSpectrum
{
public:
    PrpdSpectrum();

    // Lines of a frame of mains.frameSize() values. Does not allocate.
    MainsLines analyse(const float* frame, const MainsGeometry& mains);

private:
    // Complex, with imaginary parts that stay zero.
    struct Transform
    {
        explicit Transform(int size);

        FFTArray frame;
        FFTArray spectrum;
        FFTPlan plan;
    };

    Transform m_frame50;
    Transform m_frame60;
    std::array<float, largestFrame / 2> m_power;
};

}  // namespace KOVPrivate

#endif
