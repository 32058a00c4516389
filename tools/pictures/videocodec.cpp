#include "tools/pictures/videocodec.h"

#include "tools/pictures/loadmodule.h"

namespace kovtools {

const VideoCodec& videoCodec()
{
    static const auto& codec = loadCodec<VideoCodec>("kovdoa_video.so", "kovdoaVideoCodec");
    return codec;
}

}  // namespace kovtools
