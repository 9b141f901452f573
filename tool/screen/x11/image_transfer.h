// Fetches images of the X screen: through memory shared with the server, or in its replies.
#pragma once

#include "tool/screen/rectangle.h"
#include "tool/screen/x11/reply.h"

#include <cstddef>
#include <cstdint>

namespace tool {

class ImageTransfer
{
public:
    // `bytes`: of memory for all images, four for each pixel. A server on another machine, or
    // without access to our memory, sends replies instead.
    ImageTransfer(xcb_connection_t* connection, xcb_window_t root, size_t bytes);
    ImageTransfer(const ImageTransfer&) = delete;
    ImageTransfer& operator=(const ImageTransfer&) = delete;
    ~ImageTransfer();

    bool IsShared() const { return m_pMemory != nullptr; }

    // Asks for a part of the screen, not empty. Shared memory receives it from `offset` on.
    void Ask(const Rectangle& part, size_t offset = 0);
    // Returns false as long as the server has not answered.
    bool Poll() { return m_reply.Poll(m_pConnection); }
    // Whether there is no image, because the part was beyond the screen or the server is gone.
    bool IsRefused();

    // The shared memory, or the last reply's image, if there is one.
    uint8_t* Memory();

private:
    void Share(size_t bytes);

    xcb_connection_t* m_pConnection;
    xcb_window_t m_root;
    uint8_t* m_pMemory = nullptr;
    uint32_t m_segment = 0;
    PendingReply<xcb_get_image_reply_t> m_reply; // with shared memory, of another type: never read
    size_t m_nExpected = 0;                      // bytes in the reply
};

} // namespace tool
