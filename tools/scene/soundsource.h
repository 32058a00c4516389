// The moving sources of the simulated scene.
#ifndef KOVTOOLS_SOUNDSOURCE_H
#define KOVTOOLS_SOUNDSOURCE_H

#include <string>
#include <vector>

#include "tools/scene/fieldofview.h"

namespace kovtools {

class Random;

// A leak: broadband hiss with a broad hump, its loudness swelling slowly, moving on a smooth closed path.
class SoundSource
{
public:
    // One swing about a middle value: amplitude * sin(2 pi t / period + phase).
    struct Swing
    {
        double middle;
        double amplitude;
        double period;  // s
        double phase;   // rad

        double at(double time) const;
    };

    std::string name;      // "A", "B", ...
    Swing u;               // position in the picture, fractions of its width
    Swing v;               // and of its height
    double level;          // root mean square pressure at the array over the working band, Pa, on average
    Swing swell;           // its variation, dB
    double humpFrequency;  // Hz
    double humpWidth;      // Hz, half the width at half the power

    PicturePosition positionAt(double time) const { return {u.at(time), v.at(time)}; }
    double levelAt(double time) const;

    // Relative power density at a frequency, Hz.
    double powerDensity(double frequency) const;
};

// `count` sources, each 1.5 dB weaker than the one before, spread around the middle of the picture so that
// their paths seldom meet.
std::vector<SoundSource> makeSources(int count, Random& random);

}  // namespace kovtools

#endif
