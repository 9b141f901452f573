#include "tool/awake/idle_holds.h"
#include "tool/system/shared_library.h"

#include <cstdint>

namespace tool {
namespace {

// The few functions of two frameworks that are used, as their documentation declares them. `tool`
// links neither.
using StringRef = const void*;
using CreateString = StringRef(const void* allocator, const char* text, uint32_t encoding);
using CreateAssertion = int(StringRef type, uint32_t level, StringRef name, uint32_t* assertion);

// Against display sleep, screen saver and the lock that follows them. The system releases it when
// the process ends.
void HoldPowerAssertion()
{
    constexpr uint32_t utf8 = 0x08000100;
    constexpr uint32_t levelOn = 255;
    SharedLibrary foundation("/System/Library/Frameworks/CoreFoundation.framework/CoreFoundation");
    SharedLibrary power("/System/Library/Frameworks/IOKit.framework/IOKit");
    CreateString* createString = nullptr;
    CreateAssertion* createAssertion = nullptr;
    foundation.Find(createString, "CFStringCreateWithCString");
    power.Find(createAssertion, "IOPMAssertionCreateWithName");
    if (!foundation.IsComplete() || !power.IsComplete()) {
        return;
    }
    const StringRef type = createString(nullptr, "PreventUserIdleDisplaySleep", utf8);
    const StringRef name = createString(nullptr, "Recording the screen", utf8);
    uint32_t assertion = 0;
    if (type != nullptr && name != nullptr) {
        createAssertion(type, levelOn, name, &assertion);
    }
}

} // namespace

std::vector<IdleHold> IdleHolds()
{
    return {HoldPowerAssertion};
}

} // namespace tool
