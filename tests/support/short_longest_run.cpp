// A `tool` that lets the recorder go sooner, for tests with the short wait for the tool.
#include "tests/support/short_tool_wait.h"
#include "tool/edit/job.h"

namespace tool {

const std::chrono::milliseconds longestRun{kShortToolWaitMs - 1000};

} // namespace tool
