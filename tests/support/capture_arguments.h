// Recordings as the recorder asks for them.
#pragma once

#include "tool/command/command.h"

inline const tool::Arguments outputOptions = {"-ar",
                                              "44100",
                                              "-r",
                                              "29.97",
                                              "-preset",
                                              "ultrafast",
                                              "-max_muxing_queue_size",
                                              "9999",
                                              "-async",
                                              "1",
                                              "-pix_fmt",
                                              "yuv420p",
                                              "/v/2018-05-01 14-03-27.mp4"};

inline tool::Arguments Recording(const tool::Arguments& inputs)
{
    tool::Arguments all = inputs;
    all.insert(all.end(), outputOptions.begin(), outputOptions.end());
    return all;
}

inline const tool::Arguments silent =
    Recording({"-f", "avfoundation", "-framerate", "30", "-i", "0"});
inline const tool::Arguments oneSound =
    Recording({"-f", "avfoundation", "-framerate", "30", "-i", "0:2"});
inline const tool::Arguments twoSounds = Recording(
    {"-f", "avfoundation", "-framerate", "30", "-i", "1:0", "-f", "avfoundation", "-i", "1:3"});
