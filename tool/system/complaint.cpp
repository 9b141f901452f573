#include "tool/system/complaint.h"

#include <cstdio>

namespace tool {

int Complain(const std::string& sentence, int code)
{
    std::fprintf(stderr, "tool: %s.\n", sentence.c_str());
    return code;
}

} // namespace tool
