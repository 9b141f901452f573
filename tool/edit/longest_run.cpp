#include "tool/edit/job.h"

namespace tool {

const std::chrono::milliseconds longestRun{29000};

} // namespace tool
