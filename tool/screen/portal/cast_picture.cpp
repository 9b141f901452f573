#include "tool/screen/portal/cast_picture.h"

#include <cstring>
#include <spa/buffer/meta.h>
#include <sys/stat.h>

namespace tool {
namespace {

constexpr int pixelBytes = 4;
constexpr uint32_t mostTransforms = 8;

// A copy of the metadata of this type, or nothing if there is none of sufficient size. It is in
// shared memory too: what was checked could be another value when it is used.
template <typename Meta>
std::optional<Meta> Find(const spa_buffer& buffer, spa_meta_type type)
{
    const void* found = spa_buffer_find_meta_data(&buffer, type, sizeof(Meta));
    Meta meta;
    if (found == nullptr) {
        return std::nullopt;
    }
    std::memcpy(&meta, found, sizeof meta);
    return meta;
}

bool IsDamaged(const spa_buffer& buffer, const spa_chunk& chunk)
{
    const auto header = Find<spa_meta_header>(buffer, SPA_META_Header);
    const auto chunkFlags = static_cast<uint32_t>(chunk.flags);
    return (chunkFlags & (SPA_CHUNK_FLAG_CORRUPTED | SPA_CHUNK_FLAG_EMPTY)) != 0 ||
           (header && (header->flags & SPA_META_HEADER_FLAG_CORRUPTED) != 0);
}

// A file that is shorter than it was said to be would end this program when it is read.
bool IsWhole(const spa_data& data)
{
    struct stat file = {};
    return data.type != SPA_DATA_MemFd || (fstat(static_cast<int>(data.fd), &file) == 0 &&
                                           file.st_size >= int64_t{data.mapoffset} + data.maxsize);
}

// The part of the picture that is to be shown: all of it, if what is said makes no sense.
Rectangle Shown(const spa_buffer& buffer, const CastFormat& format)
{
    const auto crop = Find<spa_meta_region>(buffer, SPA_META_VideoCrop);
    if (crop) {
        const auto& [place, size] = crop->region;
        if (place.x >= 0 && place.y >= 0 && size.width > 0 && size.height > 0 &&
            int64_t{place.x} + size.width <= format.width &&
            int64_t{place.y} + size.height <= format.height) {
            return {place.x, place.y, static_cast<int>(size.width), static_cast<int>(size.height)};
        }
    }
    return {0, 0, format.width, format.height};
}

} // namespace

std::optional<SourcePicture> PictureIn(const spa_buffer& buffer, const CastFormat& format)
{
    if (buffer.n_datas < 1 || buffer.datas[0].data == nullptr || buffer.datas[0].chunk == nullptr) {
        return std::nullopt;
    }
    const spa_data& data = buffer.datas[0];
    const spa_chunk chunk = *data.chunk; // in shared memory: it could change while it is checked
    const int row = format.width * pixelBytes;
    const int stride = chunk.stride == 0 ? row : chunk.stride;
    // The size that is said is not needed, except that without content it is 0.
    if (chunk.size == 0 || stride < row || IsDamaged(buffer, chunk) ||
        int64_t{chunk.offset} + int64_t{stride} * (format.height - 1) + row > data.maxsize ||
        !IsWhole(data)) {
        return std::nullopt;
    }
    const Rectangle shown = Shown(buffer, format);
    const auto turned = Find<spa_meta_videotransform>(buffer, SPA_META_VideoTransform);
    SourcePicture picture;
    picture.first = static_cast<const uint8_t*>(data.data) + chunk.offset +
                    static_cast<ptrdiff_t>(shown.y) * stride +
                    static_cast<ptrdiff_t>(shown.x) * pixelBytes;
    picture.stride = stride;
    picture.width = shown.width;
    picture.height = shown.height;
    picture.order = format.order;
    picture.transform =
        turned && turned->transform < mostTransforms ? static_cast<int>(turned->transform) : 0;
    return picture;
}

} // namespace tool
