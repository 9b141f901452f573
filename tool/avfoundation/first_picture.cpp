#include "tool/avfoundation/first_picture.h"

namespace tool {

const std::chrono::milliseconds firstPicturePatience{20000};

} // namespace tool
