#include "tool/system/pending_signal.h"

namespace tool {

bool HasPendingSignal(pid_t /*process*/, int /*number*/)
{
    return false;
}

} // namespace tool
