#include "tool/capture/steady_frames.h"

namespace tool {

// Rounding each time drops and duplicates frames when the times are near the middle between two
// grid points. So a frame goes to the grid point after its predecessor's, unless it is off by more
// than 0.7 of a frame; then its time counts. `fps` fills the gaps.
std::string SteadyFrames(const std::string& rate)
{
    const std::string due = "T*" + rate;
    return "setpts='if(eq(N,0),st(1,round(" + due + ")),if(lt(abs(" + due +
           "-ld(1)-1),0.7),st(1,ld(1)+1),st(1,max(ld(1),round(" + due + ")))))/" + rate +
           "/TB',fps=" + rate;
}

} // namespace tool
