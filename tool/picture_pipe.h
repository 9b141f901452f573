// Hands pictures to the reader of a pipe without ever waiting for it. Their memory goes into the
// pipe as it is, uncopied, where the system can do that.
#pragma once

#include "tool/picture_clock.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace tool {

class PicturePipe
{
public:
    // `pipe` does not block; each picture has so many bytes.
    PicturePipe(int pipe, size_t bytes);
    PicturePipe(const PicturePipe&) = delete;
    PicturePipe& operator=(const PicturePipe&) = delete;
    ~PicturePipe();

    // Memory for the next picture, nothing of which is on its way to the reader any more; nullptr
    // when the reader has left all of it waiting.
    uint8_t* Blank();

    // Puts what Blank gave last behind the pictures that wait, so many times.
    void Add(int64_t times = 1);
    // Puts the last picture there once more, so many times.
    void Repeat(int64_t times);

    // Writes what waits, and waits itself until then. False when nobody reads any more.
    bool Work(SteadyTime until);
    // Whether a picture waits, or a part of one.
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

    int m_nPipe;
    size_t m_nBytes;
    size_t m_nCapacity = 0; // of the pipe, in bytes
    size_t m_nDistance = 0; // bytes from picture to picture in memory
    uint8_t* m_pMemory = nullptr;
    bool m_bSplices = true;
    size_t m_nBlank = 0;
    std::vector<uint64_t> m_free;  // of each picture: how much must have been written to reuse it
    std::deque<Waiting> m_waiting; // the last one stays, for Repeat
    uint64_t m_nWritten = 0;       // bytes since the start
    size_t m_nGiven = 0;           // of the first that waits
};

} // namespace tool
