#pragma once

// The longest wait for the tool in programs linked with short_tool_wait.cpp.
inline constexpr int kShortToolWaitMs = 3000;
