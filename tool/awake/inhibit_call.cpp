#include "tool/awake/inhibit_call.h"

namespace tool {

BusMessage InhibitCall(const BusObject& object)
{
    BusMessage call(
        Bus()->messageNewMethodCall(object.service, object.path, object.interface, "Inhibit"));
    if (call) {
        Bus()->messageSetAutoStart(call.get(), 0);
    }
    return call;
}

} // namespace tool
