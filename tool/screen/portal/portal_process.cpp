#include "tool/screen/portal/portal_process.h"

#include "tool/bus/session_user.h"
#include "tool/screen/portal/portal_conversation.h"
#include "tool/screen/portal/restore_token.h"
#include "tool/system/parent_end.h"
#include "tool/system/signals.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tool {
namespace {

constexpr size_t longestReason = 500;

// What the process tells this one; the connection to PipeWire comes along.
struct Told
{
    uint32_t node = 0;
    std::array<char, longestReason + 1> reason{};
};

struct Mail
{
    Mail()
    {
        header.msg_iov = &content;
        header.msg_iovlen = 1;
        header.msg_control = control.data();
        header.msg_controllen = control.size();
    }
    Mail(const Mail&) = delete;
    Mail& operator=(const Mail&) = delete;

    Told told;
    iovec content{&told, sizeof told};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    msghdr header{};
};

void Tell(int socket, const std::optional<PortalStream>& stream, const std::string& reason)
{
    Mail mail;
    std::copy_n(reason.data(), std::min(reason.size(), longestReason), mail.told.reason.data());
    if (stream) {
        mail.told.node = stream->node;
        const int number = stream->pipewire.Number();
        cmsghdr* attached = CMSG_FIRSTHDR(&mail.header);
        attached->cmsg_level = SOL_SOCKET;
        attached->cmsg_type = SCM_RIGHTS;
        attached->cmsg_len = CMSG_LEN(sizeof number);
        std::memcpy(CMSG_DATA(attached), &number, sizeof number);
    } else {
        mail.header.msg_controllen = 0;
    }
    sendmsg(socket, &mail.header, MSG_NOSIGNAL);
}

// What the process does.
void Converse(int socket, const Rectangle& screen, pid_t parent)
{
    // In this order: what tells the parent's end is open to the parent's user only.
    if (!SignalAtParentEnd(SIGKILL, parent) || !BecomeSessionUser()) {
        return;
    }
    PortalConversation conversation;
    const auto stream = conversation.Open(RecallToken(screen));
    if (stream) {
        StoreToken(screen, conversation.Token());
    }
    Tell(socket, stream, conversation.Reason());
    if (stream) {
        conversation.WaitForEnd();
    }
}

// It must not hold the recorder's pipes open, and ends by its parent's will alone.
void LeaveParentsStreams()
{
    const Descriptor nothing(open("/dev/null", O_RDWR | O_CLOEXEC));
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        dup2(nothing.Number(), stream);
    }
    IgnoreSignals({SIGINT, SIGTERM, SIGHUP});
}

} // namespace

std::unique_ptr<PortalProcess> PortalProcess::Start(const Rectangle& screen)
{
    std::array<int, 2> sockets{};
    if (!PrepareParentEnd() ||
        socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets.data()) != 0) {
        return nullptr;
    }
    Descriptor ours(sockets[0]);
    Descriptor childs(sockets[1]);
    const pid_t parent = getpid();
    const pid_t id = fork();
    if (id == 0) {
        ours.Close();
        LeaveParentsStreams();
        Converse(childs.Number(), screen, parent);
        _exit(0);
    }
    return id < 0 ? nullptr
                  : std::unique_ptr<PortalProcess>(new PortalProcess(id, std::move(ours)));
}

PortalProcess::~PortalProcess()
{
    kill(m_nId, SIGKILL);
    while (waitpid(m_nId, nullptr, 0) < 0 && errno == EINTR) {
    }
}

PortalReport PortalProcess::Read() const
{
    Mail mail;
    PortalReport report;
    report.reason = "No screen can be recorded: the talk with the desktop's portal has broken off";
    if (recvmsg(Number(), &mail.header, MSG_DONTWAIT | MSG_CMSG_CLOEXEC) !=
        static_cast<ssize_t>(sizeof mail.told)) {
        return report;
    }
    mail.told.reason.back() = '\0';
    report.reason = mail.told.reason.data();
    report.node = mail.told.node;
    const cmsghdr* attached = CMSG_FIRSTHDR(&mail.header);
    if (attached != nullptr && attached->cmsg_level == SOL_SOCKET &&
        attached->cmsg_type == SCM_RIGHTS && attached->cmsg_len == CMSG_LEN(sizeof(int))) {
        int number = -1;
        std::memcpy(&number, CMSG_DATA(attached), sizeof number);
        report.pipewire = Descriptor(number);
    }
    return report;
}

} // namespace tool
