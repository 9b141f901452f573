#include "tool/ffmpeg/ffmpeg_program.h"

namespace tool {

// A bundle's own program comes first: it is signed with it, and may be run by root. Programs that
// are started from the Finder do not have Homebrew's folders in PATH.
SearchOrder PlatformSearchOrder()
{
    return {true, {"/opt/homebrew/bin", "/usr/local/bin"}};
}

} // namespace tool
