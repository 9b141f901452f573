// A `tool` for macOS that gives up sooner, for tests without a first picture.
#include "tool/avfoundation/first_picture.h"

namespace tool {

const std::chrono::milliseconds firstPicturePatience{1500};

} // namespace tool
