// What a PipeWire source says about its buffers and formats, and the memory it gives.
#include "tests/fuzz/target.h"
#include "tool/screen/frame_fitter.h"
#include "tool/screen/portal/cast_picture.h"
#include "tool/screen/screen_picture.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <spa/buffer/meta.h>

namespace {

// What the input decides.
struct Said
{
    uint16_t width;
    uint16_t height;
    uint8_t order;
    uint8_t metas;
    uint16_t flags;
    uint32_t memory;
    spa_chunk chunk;
    spa_meta_header header;
    spa_meta_region crop;
    spa_meta_videotransform transform;
};

constexpr int largest = 256; // larger pictures are slow, not different

void CheckPicture(Said said)
{
    const tool::CastFormat format{said.width % largest + 1, said.height % largest + 1,
                                  static_cast<tool::PixelOrder>(said.order % 4)};
    std::vector<uint8_t> memory(said.memory % (4 * largest * largest)); // a sanitizer sees its end
    std::array<spa_meta, 3> metas{
        {{SPA_META_Header, sizeof said.header, &said.header},
         {SPA_META_VideoCrop, sizeof said.crop, &said.crop},
         {SPA_META_VideoTransform, sizeof said.transform, &said.transform}}};
    spa_data data{};
    data.type = SPA_DATA_MemPtr;
    data.maxsize = static_cast<uint32_t>(memory.size());
    data.data = memory.data();
    data.chunk = &said.chunk;
    spa_buffer buffer{};
    buffer.n_metas = said.metas % (metas.size() + 1);
    buffer.metas = metas.data();
    buffer.n_datas = 1;
    buffer.datas = &data;
    const auto picture = tool::PictureIn(buffer, format);
    if (!picture) {
        return;
    }
    Require(picture->width >= 1 && picture->width <= format.width, "the width is in the picture");
    Require(picture->height >= 1 && picture->height <= format.height,
            "the height is in the picture");
    Require(picture->transform >= 0 && picture->transform < 8, "the transform is one of eight");
    constexpr int width = 32;
    constexpr int height = 20;
    std::vector<uint8_t> frame(tool::YuvBytes(width, height));
    tool::FrameFitter().Write(*picture, frame.data(), width, height); // reads all of it
}

void CheckFormat(const uint8_t* data, size_t size)
{
    std::vector<uint64_t> aligned(size / sizeof(uint64_t));
    spa_pod pod{};
    if (aligned.empty()) {
        return;
    }
    std::memcpy(aligned.data(), data, aligned.size() * sizeof(uint64_t));
    std::memcpy(&pod, aligned.data(), sizeof pod);
    if (pod.size > aligned.size() * sizeof(uint64_t) - sizeof pod) {
        return; // PipeWire passes on no parameter that is larger than its message
    }
    const auto format = tool::ReadFormat(reinterpret_cast<const spa_pod*>(aligned.data()));
    if (format) {
        Require(format->width >= 1 && format->width <= tool::largestSide, "the width is possible");
        Require(format->height >= 1 && format->height <= tool::largestSide,
                "the height is possible");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Said said{};
    std::memcpy(&said, data, std::min(size, sizeof said));
    CheckPicture(said);
    CheckFormat(data, size);
    return 0;
}
