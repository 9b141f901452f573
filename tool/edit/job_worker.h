// The part of a job that goes on when the process the recorder started has ended.
#pragma once

#include "tool/edit/console.h"
#include "tool/edit/job.h"
#include "tool/edit/output_filter.h"
#include "tool/edit/part_file.h"
#include "tool/edit/ticks.h"
#include "tool/system/process.h"
#include "tool/system/signals.h"

#include <optional>
#include <string>

namespace tool {

// Runs ffmpeg, passes on what it says, and completes or deletes its file.
class JobWorker
{
public:
    // A byte from `leash` cancels the job. At its end there is nobody left who listens.
    JobWorker(const Job& job, PartFile& part, Descriptor leash);

    // Returns the exit code. If nobody listens any more, the desktop tells how it ended.
    int Run();

private:
    // Returns the path of the file, or nothing if there is none.
    std::optional<std::string> Make();
    bool Start();
    void Look(int milliseconds);
    void EndGroup() const;
    void ReadOutput();
    void ReadLeash();
    void ReadSignals();
    double Share() const;
    void TellProgress();
    bool SyncFile();
    void TellEnd(const std::optional<std::string>& file);

    const Job& m_job;
    PartFile& m_part;
    Descriptor m_leash;
    Signals m_signals;
    std::optional<Process> m_ffmpeg;
    Descriptor m_output; // of ffmpeg
    OutputFilter m_filter;
    Ticks m_ticks;
    Console m_console;
    bool m_cancelled = false;
    std::string m_problem; // why there is no file, without a full stop
};

// The last line of a job that failed, which makes the recorder show that.
std::string FailureLine(const std::string& destination);

} // namespace tool
