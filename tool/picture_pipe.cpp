#include "tool/picture_pipe.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/uio.h>
#include <unistd.h>

namespace tool {
namespace {

constexpr int pipeBytes = 1 << 20; // the most an ordinary user is given

} // namespace

PicturePipe::PicturePipe(int pipe, size_t bytes) : m_nPipe(pipe), m_nBytes(bytes)
{
    fcntl(pipe, F_SETPIPE_SZ, pipeBytes); // else in more and smaller pieces
    const auto capacity = static_cast<size_t>(std::max(fcntl(pipe, F_GETPIPE_SZ), pipeBytes));
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    m_nDistance = (bytes + page - 1) / page * page;
    // What has been given after a picture fills the pipe at least: so the picture has left it.
    m_nPictures = 1 + (capacity + bytes - 1) / bytes;
    void* memory = mmap(nullptr, m_nPictures * m_nDistance, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    m_pMemory = memory == MAP_FAILED ? nullptr : static_cast<uint8_t*>(memory);
}

PicturePipe::~PicturePipe()
{
    if (m_pMemory != nullptr) {
        munmap(m_pMemory, m_nPictures * m_nDistance);
    }
}

uint8_t* PicturePipe::Next()
{
    m_nCurrent = (m_nCurrent + 1) % m_nPictures;
    return Current();
}

bool PicturePipe::Give()
{
    size_t given = 0;
    while (given < m_nBytes) {
        const iovec rest{Current() + given, m_nBytes - given};
        const ssize_t count = m_bSplices ? vmsplice(m_nPipe, &rest, 1, 0)
                                         : write(m_nPipe, rest.iov_base, rest.iov_len);
        if (count >= 0) {
            given += static_cast<size_t>(count);
        } else if (m_bSplices && errno != EPIPE && errno != EINTR) {
            m_bSplices = false; // some containers forbid it
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

} // namespace tool
