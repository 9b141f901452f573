#include "tool/feed/picture_pipe.h"

#include "tool/system/pipe.h"
#include "tool/system/poll_until.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t pipeBytes = 1 << 20; // the limit for unprivileged users
// A fifth of a second, for when ffmpeg does not read. Unused frames are never touched.
constexpr size_t queued = 6;

} // namespace

PicturePipe::PicturePipe(Descriptor pipe, size_t bytes)
    : m_pipe(std::move(pipe)),
      m_nBytes(bytes),
      m_nCapacity(SetCapacity(m_pipe, pipeBytes))
{
    MakeNonBlocking(m_pipe);
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    m_nDistance = (bytes + page - 1) / page * page;
    const size_t pictures = queued + 1 + (m_nCapacity + bytes - 1) / bytes;
    void* memory = mmap(nullptr, pictures * m_nDistance, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory != MAP_FAILED) {
        m_pMemory = static_cast<uint8_t*>(memory);
        m_free.resize(pictures);
    }
}

PicturePipe::~PicturePipe()
{
    if (m_pMemory != nullptr) {
        munmap(m_pMemory, m_free.size() * m_nDistance);
    }
}

// Once a pipe's capacity has been written after a frame, all of the frame has been read.
bool PicturePipe::IsFree(size_t picture) const
{
    const auto isQueued = [picture](const Waiting& one) {
        return one.picture == picture && one.times > 0;
    };
    return m_nWritten >= m_free[picture] &&
           std::none_of(m_waiting.begin(), m_waiting.end(), isQueued);
}

// Usually ffmpeg has read everything, so the same memory serves for each frame.
uint8_t* PicturePipe::Blank()
{
    if (UnreadBytes(m_pipe) == size_t{0}) {
        std::fill(m_free.begin(), m_free.end(), 0);
    }
    for (m_nBlank = 0; m_nBlank < m_free.size(); ++m_nBlank) {
        if (IsFree(m_nBlank)) {
            return Memory(m_nBlank);
        }
    }
    return nullptr;
}

void PicturePipe::Add(int64_t times)
{
    if (!m_waiting.empty() && m_waiting.back().times == 0) {
        m_waiting.pop_back();
    }
    m_waiting.push_back({m_nBlank, times});
}

void PicturePipe::Repeat(int64_t times)
{
    if (!m_waiting.empty()) {
        m_waiting.back().times += times;
    }
}

bool PicturePipe::HasWork() const
{
    return !m_waiting.empty() && m_waiting.front().times > 0;
}

bool PicturePipe::Work(SteadyTime until)
{
    while (true) {
        pollfd pipe{m_pipe.Number(), static_cast<short>(HasWork() ? POLLOUT : 0), 0};
        if (PollUntil(pipe, until) && ((pipe.revents & POLLERR) != 0 || !Write())) {
            return false;
        }
        if (Clock::now() >= until) {
            return true;
        }
    }
}

// Writes as much as the pipe takes.
bool PicturePipe::Write()
{
    while (HasWork()) {
        Waiting& first = m_waiting.front();
        const ssize_t count =
            WriteLasting(m_pipe, Memory(first.picture) + m_nGiven, m_nBytes - m_nGiven);
        if (count < 0) {
            return errno == EAGAIN || errno == EINTR;
        }
        m_nWritten += static_cast<uint64_t>(count);
        m_nGiven += static_cast<size_t>(count);
        if (m_nGiven == m_nBytes) {
            m_nGiven = 0;
            m_free[first.picture] = m_nWritten + m_nCapacity;
            if (--first.times == 0 && m_waiting.size() > 1) {
                m_waiting.pop_front();
            }
        }
    }
    return true;
}

} // namespace tool
