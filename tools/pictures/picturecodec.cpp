#include "tools/pictures/picturecodec.h"

#include "tools/pictures/loadmodule.h"

namespace kovtools {

const PictureCodec& pictureCodec()
{
    static const auto& codec = loadCodec<PictureCodec>("kovdoa_pictures.so", "kovdoaPictureCodec");
    return codec;
}

}  // namespace kovtools
