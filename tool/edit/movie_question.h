#pragma once

#include "tool/command/command.h"

#include <optional>
#include <string>
#include <vector>

namespace tool {

// What `ffmpeg -i PART -i PART ...` says about these inputs. Meanwhile lines are printed and keys
// are read: the recorder passes a cancel on when it reads output. Returns nothing if "q" was typed,
// and an incomplete answer when the recorder is about to stop waiting. `inherited`: the descriptors
// that the inputs refer to.
std::optional<std::string> AskAboutMovies(const std::string& ffmpeg,
                                          const std::vector<std::string>& urls,
                                          const std::vector<int>& inherited);

} // namespace tool
