// Hands pictures to the reader of a pipe. Their memory goes into the pipe as it is, uncopied, where
// the system can do that.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tool {

class PicturePipe
{
public:
    // `pipe` blocks; each picture has so many bytes. Check Good() after.
    PicturePipe(int pipe, size_t bytes);
    PicturePipe(const PicturePipe&) = delete;
    PicturePipe& operator=(const PicturePipe&) = delete;
    ~PicturePipe();

    bool Good() const { return m_pMemory != nullptr; }

    // Memory for the next picture. Nothing of it is on its way to the reader any more.
    uint8_t* Next();

    // Gives the picture that Next stood for last; any number of times. False when nobody reads.
    bool Give();

private:
    uint8_t* Current() const { return m_pMemory + m_nCurrent * m_nDistance; }

    int m_nPipe;
    size_t m_nBytes;
    size_t m_nDistance = 0; // bytes from picture to picture in memory
    size_t m_nPictures = 0;
    size_t m_nCurrent = 0;
    uint8_t* m_pMemory = nullptr;
    bool m_bSplices = true;
};

} // namespace tool
