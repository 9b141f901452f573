// Passes frames to the reader of a pipe without ever waiting for it, and without copying where the
// system supports that.
#pragma once

#include "tool/system/descriptor.h"
#include "tool/system/steady_time.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace tool {

class PicturePipe
{
public:
    // `bytes`: the size of a frame.
    PicturePipe(Descriptor pipe, size_t bytes);
    PicturePipe(const PicturePipe&) = delete;
    PicturePipe& operator=(const PicturePipe&) = delete;
    ~PicturePipe();

    const Descriptor& Outlet() const { return m_pipe; }

    // Memory for the next frame that the reader no longer uses, or nullptr if all of it is waiting
    // to be read. May be that of the last frame, so Add() has to follow.
    uint8_t* Blank();

    // Queues the frame last returned by Blank(), `times` times.
    void Add(int64_t times = 1);
    // Queues the last frame again, `times` times.
    void Repeat(int64_t times);

    // Writes queued frames until that time. Returns false if the reader is gone.
    bool Work(SteadyTime until);
    // Whether a frame, or part of one, is queued.
    bool HasWork() const;

private:
    struct Waiting
    {
        size_t picture = 0;
        int64_t times = 0;
    };

    bool Write();
    bool IsFree(size_t picture) const;
    uint8_t* Memory(size_t picture) const { return m_pMemory + picture * m_nDistance; }

    Descriptor m_pipe;
    size_t m_nBytes;
    size_t m_nCapacity;     // of the pipe, in bytes
    size_t m_nDistance = 0; // bytes from frame to frame in memory
    uint8_t* m_pMemory = nullptr;
    size_t m_nBlank = 0;
    std::vector<uint64_t> m_free;  // for each frame, the value of m_nWritten that allows reuse
    std::deque<Waiting> m_waiting; // the last one stays, for Repeat()
    uint64_t m_nWritten = 0;       // bytes since the start
    size_t m_nGiven = 0;           // bytes written of the first one waiting
};

} // namespace tool
