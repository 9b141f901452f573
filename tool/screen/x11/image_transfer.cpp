#include "tool/screen/x11/image_transfer.h"

#include "tool/screen/x11/display.h"

#include <sys/ipc.h>
#include <sys/shm.h>
#include <xcb/shm.h>

namespace tool {

ImageTransfer::ImageTransfer(xcb_connection_t* connection, xcb_window_t root, size_t bytes)
    : m_pConnection(connection),
      m_root(root)
{
    if (HasExtension(connection, &xcb_shm_id)) {
        Share(bytes);
    }
}

ImageTransfer::~ImageTransfer()
{
    if (m_pMemory != nullptr) {
        shmdt(m_pMemory);
    }
}

void ImageTransfer::Share(size_t bytes)
{
    const int id = shmget(IPC_PRIVATE, bytes, IPC_CREAT | 0600);
    if (id < 0) {
        return;
    }
    void* address = shmat(id, nullptr, 0);
    m_segment = xcb_generate_id(m_pConnection);
    const Owned<xcb_generic_error_t> error(
        xcb_request_check(m_pConnection, xcb_shm_attach_checked(m_pConnection, m_segment,
                                                                static_cast<uint32_t>(id), 0)));
    shmctl(id, IPC_RMID, nullptr); // deleted with its last user
    if (reinterpret_cast<intptr_t>(address) == -1) {
        return;
    }
    if (error != nullptr) {
        shmdt(address);
        return;
    }
    m_pMemory = static_cast<uint8_t*>(address);
}

void ImageTransfer::Ask(const Rectangle& part, size_t offset)
{
    const auto x = static_cast<int16_t>(part.x);
    const auto y = static_cast<int16_t>(part.y);
    const auto width = static_cast<uint16_t>(part.width);
    const auto height = static_cast<uint16_t>(part.height);
    constexpr uint32_t allBits = ~0U;
    if (IsShared()) {
        m_reply.Await(xcb_shm_get_image(m_pConnection, m_root, x, y, width, height, allBits,
                                        XCB_IMAGE_FORMAT_Z_PIXMAP, m_segment,
                                        static_cast<uint32_t>(offset))
                          .sequence);
    } else {
        m_nExpected = size_t{4} * width * height;
        m_reply.Await(xcb_get_image(m_pConnection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, x, y, width,
                                    height, allBits)
                          .sequence);
    }
}

bool ImageTransfer::IsRefused()
{
    const auto& reply = m_reply.Last();
    return !reply || (!IsShared() &&
                      static_cast<size_t>(xcb_get_image_data_length(reply.get())) < m_nExpected);
}

uint8_t* ImageTransfer::Memory()
{
    if (!IsShared() && m_reply.Last()) {
        return xcb_get_image_data(m_reply.Last().get());
    }
    return m_pMemory;
}

} // namespace tool
