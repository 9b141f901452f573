#include "tool/ffmpeg/ffmpeg_program.h"

namespace tool {

SearchOrder PlatformSearchOrder()
{
    return {};
}

} // namespace tool
