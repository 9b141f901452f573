// A shorter wait for the tool, for tests that exceed it.
#include "tests/support/short_tool_wait.h"

#include "jobs/tool_runner.h"

const int kToolWaitMs = kShortToolWaitMs;
