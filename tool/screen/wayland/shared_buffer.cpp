#include "tool/screen/wayland/shared_buffer.h"

#include "tool/screen/wayland/pixel_formats.h"
#include "tool/screen/wayland/wayland_client.h"
#include "tool/system/descriptor.h"

#include <fcntl.h>
#include <limits>
#include <sys/mman.h>
#include <unistd.h>

namespace tool {
namespace {

// A file in memory that nobody can shrink: reading beyond its end would end this process.
Descriptor SealedMemory(size_t bytes)
{
    Descriptor memory(memfd_create("lumenfold-picture", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!memory.IsOpen() || ftruncate(memory.Number(), static_cast<off_t>(bytes)) != 0 ||
        fcntl(memory.Number(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) != 0) {
        return {};
    }
    return memory;
}

} // namespace

bool BufferLayout::IsUsable() const
{
    const auto order = OrderOf(format);
    constexpr auto largest = static_cast<uint32_t>(largestSide);
    return order && width > 0 && width <= largest && height > 0 && height <= largest &&
           stride >= width * static_cast<uint32_t>(PixelBytes(*order)) &&
           stride <= std::numeric_limits<int32_t>::max() / height;
}

std::unique_ptr<SharedBuffer> SharedBuffer::Create(wl_shm* sharedMemory, const BufferLayout& layout)
{
    if (!layout.IsUsable()) {
        return nullptr;
    }
    const Descriptor file = SealedMemory(layout.Bytes());
    if (!file.IsOpen()) {
        return nullptr;
    }
    void* memory = mmap(nullptr, layout.Bytes(), PROT_READ, MAP_SHARED, file.Number(), 0);
    if (memory == MAP_FAILED) {
        return nullptr;
    }
    wl_shm_pool* pool =
        wl_shm_create_pool(sharedMemory, file.Number(), static_cast<int32_t>(layout.Bytes()));
    wl_buffer* buffer = nullptr;
    if (pool != nullptr) {
        buffer = wl_shm_pool_create_buffer(pool, 0, static_cast<int32_t>(layout.width),
                                           static_cast<int32_t>(layout.height),
                                           static_cast<int32_t>(layout.stride), layout.format);
        wl_shm_pool_destroy(pool);
    }
    if (buffer == nullptr) {
        munmap(memory, layout.Bytes());
        return nullptr;
    }
    return std::unique_ptr<SharedBuffer>(
        new SharedBuffer(layout, static_cast<uint8_t*>(memory), buffer));
}

SharedBuffer::SharedBuffer(const BufferLayout& layout, uint8_t* memory, wl_buffer* buffer)
    : m_layout(layout),
      m_pMemory(memory),
      m_pBuffer(buffer)
{
}

SharedBuffer::~SharedBuffer()
{
    wl_buffer_destroy(m_pBuffer);
    munmap(m_pMemory, m_layout.Bytes());
}

SourcePicture SharedBuffer::Picture(bool isUpsideDown, int transform) const
{
    const auto stride = static_cast<int>(m_layout.stride);
    const auto height = static_cast<int>(m_layout.height);
    const auto order = OrderOf(m_layout.format).value_or(PixelOrder::Bgr);
    const auto width = static_cast<int>(m_layout.width);
    if (isUpsideDown) {
        return {m_pMemory + static_cast<ptrdiff_t>(height - 1) * stride,
                -stride,
                width,
                height,
                order,
                transform};
    }
    return {m_pMemory, stride, width, height, order, transform};
}

} // namespace tool
