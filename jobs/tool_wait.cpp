#include "jobs/tool_runner.h"

const int kToolWaitMs = 30000;
