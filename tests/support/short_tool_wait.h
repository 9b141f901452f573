#pragma once

// How long the programs linked with short_tool_wait.cpp wait for the tool at most.
inline constexpr int kShortToolWaitMs = 3000;
