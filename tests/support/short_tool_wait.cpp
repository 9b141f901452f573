// A shorter wait for the tool than the product's, for the tests that use up all of it.
#include "tests/support/short_tool_wait.h"

#include "jobs/tool_runner.h"

const int kToolWaitMs = kShortToolWaitMs;
