// Replies of the X server.
#pragma once

#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>
#include <xcb/xcbext.h>

namespace tool {

struct FreeReply
{
    void operator()(void* reply) const { std::free(reply); } // NOLINT(*-no-malloc)
};

// A reply, which the caller has to free.
template <typename Reply>
using Owned = std::unique_ptr<Reply, FreeReply>;

// A reply that is fetched without waiting for it.
template <typename Reply>
class PendingReply
{
public:
    // `sequence`: of the request, as in its cookie.
    void Await(unsigned int sequence) { m_nSequence = sequence; }
    // Returns false as long as the server has not answered the request.
    bool Poll(xcb_connection_t* connection)
    {
        void* reply = nullptr;
        xcb_generic_error_t* error = nullptr;
        if (m_nSequence != 0 && xcb_poll_for_reply(connection, m_nSequence, &reply, &error) != 0) {
            m_nSequence = 0;
            m_reply.reset(static_cast<Reply*>(reply));
            std::free(error); // NOLINT(*-no-malloc)
        }
        return m_nSequence == 0;
    }
    // The last one; null if the server refused or is gone.
    Owned<Reply>& Last() { return m_reply; }

private:
    unsigned int m_nSequence = 0; // 0: answered
    Owned<Reply> m_reply;
};

} // namespace tool
