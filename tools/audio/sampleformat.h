// How samples are stored in the WAV files that the program writes.
#ifndef KOVTOOLS_SAMPLEFORMAT_H
#define KOVTOOLS_SAMPLEFORMAT_H

#include <string>

namespace kovtools {

enum class SampleFormat { Integer8, Integer16, Integer24, Integer32, Float32, Float64 };

// "16-bit", "32-bit float" and so on.
std::string formatName(SampleFormat format);

int bytesPerSample(SampleFormat format);

// 0 for floats.
int integerBits(SampleFormat format);

}  // namespace kovtools

#endif
