#include "tool/awake/awake.h"

#include "tool/awake/idle_holds.h"
#include "tool/system/signals.h"

#include <exception>
#include <thread>

namespace tool {

// Services may take any time to answer, so nobody waits for these threads, not at the end either.
void KeepAwake()
{
    const SignalBlock block; // they are for other threads
    try {
        for (const IdleHold hold : IdleHolds()) {
            std::thread([hold] {
                try {
                    hold();
                } catch (const std::exception&) { // no memory is left
                }
            }).detach();
        }
    } catch (const std::exception&) { // nor for a thread; the recording goes on
    }
}

} // namespace tool
