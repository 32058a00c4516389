#include "tools/audio/sampleformat.h"

namespace kovtools {

int integerBits(SampleFormat format)
{
    switch (format) {
        case SampleFormat::Integer8:
            return 8;
        case SampleFormat::Integer16:
            return 16;
        case SampleFormat::Integer24:
            return 24;
        case SampleFormat::Integer32:
            return 32;
        case SampleFormat::Float32:
        case SampleFormat::Float64:
            break;
    }
    return 0;
}

int bytesPerSample(SampleFormat format)
{
    const int bits = integerBits(format);
    if (bits != 0) {
        return bits / 8;
    }
    return format == SampleFormat::Float32 ? 4 : 8;
}

std::string formatName(SampleFormat format)
{
    return std::to_string(8 * bytesPerSample(format)) + "-bit" + (integerBits(format) == 0 ? " float" : "");
}

}  // namespace kovtools
