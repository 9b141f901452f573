#include "tool/screen/portal/cast_format.h"

#include <cstring>
#include <spa/buffer/buffer.h>
#include <spa/buffer/meta.h>
#include <spa/param/param.h>
#include <spa/param/video/format-utils.h>
#include <spa/pod/builder.h>

namespace tool {
namespace {

// A screen may change 60 times a second. Of 30 a second, fewer would be new when a frame is due.
constexpr spa_fraction fastest{60, 1};

struct KnownFormat
{
    spa_video_format format;
    PixelOrder order;
};

constexpr std::array<KnownFormat, 8> knownFormats{{
    {SPA_VIDEO_FORMAT_BGRx, PixelOrder::Bgr},
    {SPA_VIDEO_FORMAT_BGRA, PixelOrder::Bgr},
    {SPA_VIDEO_FORMAT_RGBx, PixelOrder::Rgb},
    {SPA_VIDEO_FORMAT_RGBA, PixelOrder::Rgb},
    {SPA_VIDEO_FORMAT_xRGB_210LE, PixelOrder::Bgr10},
    {SPA_VIDEO_FORMAT_ARGB_210LE, PixelOrder::Bgr10},
    {SPA_VIDEO_FORMAT_xBGR_210LE, PixelOrder::Rgb10},
    {SPA_VIDEO_FORMAT_ABGR_210LE, PixelOrder::Rgb10},
}};

void AddFormats(spa_pod_builder& builder)
{
    spa_pod_frame choice;
    spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_format, 0);
    spa_pod_builder_push_choice(&builder, &choice, SPA_CHOICE_Enum, 0);
    spa_pod_builder_id(&builder, knownFormats.front().format); // the preferred one
    for (const KnownFormat& known : knownFormats) {
        spa_pod_builder_id(&builder, known.format);
    }
    spa_pod_builder_pop(&builder, &choice);
}

void AddSizes(spa_pod_builder& builder)
{
    spa_pod_frame choice;
    spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_size, 0);
    spa_pod_builder_push_choice(&builder, &choice, SPA_CHOICE_Range, 0);
    spa_pod_builder_rectangle(&builder, 1920, 1080);
    spa_pod_builder_rectangle(&builder, 1, 1);
    spa_pod_builder_rectangle(&builder, largestSide, largestSide);
    spa_pod_builder_pop(&builder, &choice);
}

// The rate varies from 0, up to that maximum.
void AddRates(spa_pod_builder& builder)
{
    for (const uint32_t key : {SPA_FORMAT_VIDEO_framerate, SPA_FORMAT_VIDEO_maxFramerate}) {
        const bool isMost = key == SPA_FORMAT_VIDEO_maxFramerate;
        spa_pod_frame choice;
        spa_pod_builder_prop(&builder, key, 0);
        spa_pod_builder_push_choice(&builder, &choice, SPA_CHOICE_Range, 0);
        spa_pod_builder_fraction(&builder, isMost ? fastest.num : 0, 1);
        spa_pod_builder_fraction(&builder, 0, 1);
        spa_pod_builder_fraction(&builder, fastest.num, fastest.denom);
        spa_pod_builder_pop(&builder, &choice);
    }
}

const spa_pod* Buffer(spa_pod_builder& builder)
{
    constexpr int usual = 4;
    constexpr int least = 2;
    constexpr int most = 16;
    constexpr int memory = (1 << SPA_DATA_MemFd) | (1 << SPA_DATA_MemPtr);
    spa_pod_frame object;
    spa_pod_builder_push_object(&builder, &object, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers);
    spa_pod_builder_add(&builder, SPA_PARAM_BUFFERS_buffers,
                        SPA_POD_CHOICE_RANGE_Int(usual, least, most), SPA_PARAM_BUFFERS_dataType,
                        SPA_POD_CHOICE_FLAGS_Int(memory), 0);
    return static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &object));
}

const spa_pod* Meta(spa_pod_builder& builder, spa_meta_type type, size_t size)
{
    spa_pod_frame object;
    spa_pod_builder_push_object(&builder, &object, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta);
    spa_pod_builder_add(&builder, SPA_PARAM_META_type, SPA_POD_Id(type), SPA_PARAM_META_size,
                        SPA_POD_Int(static_cast<int>(size)), 0);
    return static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &object));
}

} // namespace

const spa_pod* CastParameters::OfferedFormats()
{
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, m_memory.data(), static_cast<uint32_t>(m_memory.size()));
    spa_pod_frame object;
    spa_pod_builder_push_object(&builder, &object, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video),
                        SPA_FORMAT_mediaSubtype, SPA_POD_Id(SPA_MEDIA_SUBTYPE_raw), 0);
    AddFormats(builder);
    AddSizes(builder);
    AddRates(builder);
    return static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &object));
}

std::array<const spa_pod*, 4> CastParameters::Buffers()
{
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, m_memory.data(), static_cast<uint32_t>(m_memory.size()));
    return {Buffer(builder), Meta(builder, SPA_META_Header, sizeof(spa_meta_header)),
            Meta(builder, SPA_META_VideoCrop, sizeof(spa_meta_region)),
            Meta(builder, SPA_META_VideoTransform, sizeof(spa_meta_videotransform))};
}

std::optional<CastFormat> ReadFormat(const spa_pod* format)
{
    uint32_t type = 0;
    uint32_t subtype = 0;
    spa_video_info_raw info{};
    if (format == nullptr || spa_format_parse(format, &type, &subtype) < 0 ||
        type != SPA_MEDIA_TYPE_video || subtype != SPA_MEDIA_SUBTYPE_raw ||
        spa_format_video_raw_parse(format, &info) < 0 ||
        (info.flags & SPA_VIDEO_FLAG_MODIFIER) != 0 || info.size.width < 1 ||
        info.size.width > largestSide || info.size.height < 1 || info.size.height > largestSide) {
        return std::nullopt;
    }
    // Any number may be there, which no variable of the enumeration's type could hold.
    uint32_t number = 0;
    std::memcpy(&number, &info.format, sizeof number);
    for (const KnownFormat& known : knownFormats) {
        if (static_cast<uint32_t>(known.format) == number) {
            return CastFormat{static_cast<int>(info.size.width), static_cast<int>(info.size.height),
                              known.order};
        }
    }
    return std::nullopt;
}

} // namespace tool
