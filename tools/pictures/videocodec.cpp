#include "tools/pictures/videocodec.h"

#include "tools/pictures/loadmodule.h"

namespace kovtools {

const VideoCodec& videoCodec()
{
    static const VideoCodec& codec =
        loadModule<const VideoCodec& (*)()>("kovdoa_video.so", "kovdoaVideoCodec")();
    return codec;
}

}  // namespace kovtools
