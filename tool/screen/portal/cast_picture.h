// The picture in a buffer of a PipeWire stream. What the buffer says about itself comes from
// another program and is believed only where the memory bears it out.
#pragma once

#include "tool/screen/frame_fitter.h"
#include "tool/screen/portal/cast_format.h"

#include <optional>
#include <spa/buffer/buffer.h>

namespace tool {

// Returns nothing if the buffer has no picture, a damaged one, or less memory than it takes.
std::optional<SourcePicture> PictureIn(const spa_buffer& buffer, const CastFormat& format);

} // namespace tool
