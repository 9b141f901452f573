#include "tool/system/keyboard.h"

#include <array>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {
namespace {

constexpr char quit = 'q';

bool IsPipe(int descriptor)
{
    struct stat status = {};
    return fstat(descriptor, &status) == 0 &&
           (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

} // namespace

Keyboard::Keyboard(int descriptor) : m_nDescriptor(descriptor), m_bPipe(IsPipe(descriptor)) {}

std::string Keyboard::Read()
{
    std::array<char, 256> bytes{};
    const ssize_t count = read(m_nDescriptor, bytes.data(), bytes.size());
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
        return {};
    }
    if (count <= 0) {
        m_nDescriptor = -1;
        m_bGone = m_bPipe;
        return {};
    }
    const std::string keys(bytes.data(), static_cast<size_t>(count));
    const size_t end = keys.find(quit);
    m_bQuit = m_bQuit || end != std::string::npos;
    return keys.substr(0, end);
}

} // namespace tool
