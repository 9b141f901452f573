// Memory that a compositor writes a picture into.
#pragma once

#include "tool/screen/frame_fitter.h"
#include "tool/screen/wayland/connection.h"

#include <cstddef>
#include <cstdint>
#include <memory>

struct wl_buffer;
struct wl_shm;

namespace tool {

// What a compositor wants to write.
struct BufferLayout
{
    uint32_t format = 0; // one of wl_shm.format
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t stride = 0; // bytes from row to row
    bool operator==(const BufferLayout&) const = default;

    // Whether such pictures can be converted, and the numbers fit together.
    bool IsUsable() const;
    size_t Bytes() const { return static_cast<size_t>(stride) * height; }
};

class SharedBuffer
{
public:
    // Returns null if the layout is not usable or there is no memory.
    static std::unique_ptr<SharedBuffer> Create(wl_shm* sharedMemory, const BufferLayout& layout);
    SharedBuffer(const SharedBuffer&) = delete;
    SharedBuffer& operator=(const SharedBuffer&) = delete;
    ~SharedBuffer();

    const BufferLayout& Layout() const { return m_layout; }
    wl_buffer* Buffer() const { return m_pBuffer; }
    // The picture in it.
    SourcePicture Picture(bool isUpsideDown, int transform) const;

private:
    SharedBuffer(const BufferLayout& layout, uint8_t* memory, wl_buffer* buffer);

    BufferLayout m_layout;
    uint8_t* m_pMemory;
    wl_buffer* m_pBuffer;
};

} // namespace tool
