// A source of pictures for PipeWire, as a desktop's portal is one.
//
//   cast_source FORMAT WIDTH HEIGHT
//
// Prints "node N" when it has a place in PipeWire's graph. Then it reads commands:
//
//   fill A B C     each pixel gets these bytes from now on
//   half A B C     the lower half of the picture gets these instead
//   size W H       another size
//   turn N         the transform that is said
//   crop X Y W H   the visible part that is said
//   bad FLAG       1: the pictures are said to be damaged
//   rest FLAG      1: no pictures
//   tell N         "told" is printed when N more pictures have been asked for
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <pipewire/pipewire.h>
#include <spa/param/video/format-utils.h>
#include <sstream>
#include <string>

namespace {

constexpr int interval = 16; // milliseconds

class Source
{
public:
    Source(uint32_t format, uint32_t width, uint32_t height)
        : m_format(format),
          m_size{width, height}
    {
    }
    bool Run();

private:
    using Colour = std::array<uint8_t, 3>;

    const spa_pod* Format(spa_pod_builder& builder) const;
    void Draw();
    void Follow(const std::string& line);

    static void OnState(void* self, pw_stream_state old, pw_stream_state state, const char* error);
    static void OnParameter(void* self, uint32_t id, const spa_pod* parameter);
    static void OnProcess(void* self) { static_cast<Source*>(self)->Draw(); }
    static void OnTimer(void* self, uint64_t expirations);
    static void OnInput(void* self, int descriptor, uint32_t mask);

    uint32_t m_format;
    spa_rectangle m_size;
    spa_rectangle m_agreed{};
    Colour m_upper{};
    Colour m_lower{};
    uint32_t m_turn = 0;
    spa_region m_crop{};
    bool m_bBad = false;
    bool m_bRest = false;
    bool m_bTold = false;
    int m_nAwaited = 0;
    pw_main_loop* m_pLoop = nullptr;
    pw_stream* m_pStream = nullptr;
};

const spa_pod* Source::Format(spa_pod_builder& builder) const
{
    spa_pod_frame object;
    spa_pod_builder_push_object(&builder, &object, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    spa_pod_builder_prop(&builder, SPA_FORMAT_mediaType, 0);
    spa_pod_builder_id(&builder, SPA_MEDIA_TYPE_video);
    spa_pod_builder_prop(&builder, SPA_FORMAT_mediaSubtype, 0);
    spa_pod_builder_id(&builder, SPA_MEDIA_SUBTYPE_raw);
    spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_format, 0);
    spa_pod_builder_id(&builder, m_format);
    spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_size, 0);
    spa_pod_builder_rectangle(&builder, m_size.width, m_size.height);
    spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_framerate, 0);
    spa_pod_builder_fraction(&builder, 0, 1);
    return static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &object));
}

bool Source::Run()
{
    static const pw_stream_events events = [] {
        pw_stream_events all{};
        all.version = PW_VERSION_STREAM_EVENTS;
        all.state_changed = OnState;
        all.param_changed = OnParameter;
        all.process = OnProcess;
        return all;
    }();
    m_pLoop = pw_main_loop_new(nullptr);
    pw_loop* loop = pw_main_loop_get_loop(m_pLoop);
    m_pStream = pw_stream_new_simple(loop, "cast_source",
                                     pw_properties_new(PW_KEY_MEDIA_CLASS, "Video/Source", nullptr),
                                     &events, this);
    std::array<uint8_t, 1024> memory{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, memory.data(), memory.size());
    const spa_pod* format = Format(builder);
    const auto flags =
        static_cast<pw_stream_flags>(PW_STREAM_FLAG_DRIVER | PW_STREAM_FLAG_MAP_BUFFERS);
    if (pw_stream_connect(m_pStream, PW_DIRECTION_OUTPUT, PW_ID_ANY, flags, &format, 1) < 0) {
        return false;
    }
    timespec period{0, interval * 1000000L};
    spa_source* timer = pw_loop_add_timer(loop, OnTimer, this);
    pw_loop_update_timer(loop, timer, &period, &period, false);
    pw_loop_add_io(loop, 0, SPA_IO_IN | SPA_IO_HUP, false, OnInput, this);
    return pw_main_loop_run(m_pLoop) == 0;
}

void Source::Draw()
{
    if (m_nAwaited > 0 && --m_nAwaited == 0) {
        std::cout << "told" << std::endl;
    }
    pw_buffer* buffer = m_bRest ? nullptr : pw_stream_dequeue_buffer(m_pStream);
    if (buffer == nullptr) {
        return;
    }
    spa_data& data = buffer->buffer->datas[0];
    const uint32_t row = m_agreed.width * 4;
    const uint32_t bytes = std::min(data.maxsize, row * m_agreed.height);
    for (uint32_t i = 0; data.data != nullptr && i < bytes; i += 4) {
        const Colour& colour = i < bytes / 2 ? m_upper : m_lower;
        std::copy(colour.begin(), colour.end(), static_cast<uint8_t*>(data.data) + i);
    }
    *data.chunk = {0, bytes, static_cast<int32_t>(row), m_bBad ? int{SPA_CHUNK_FLAG_CORRUPTED} : 0};
    if (auto* crop = static_cast<spa_meta_region*>(spa_buffer_find_meta_data(
            buffer->buffer, SPA_META_VideoCrop, sizeof(spa_meta_region)))) {
        crop->region = m_crop;
    }
    if (auto* turn = static_cast<spa_meta_videotransform*>(spa_buffer_find_meta_data(
            buffer->buffer, SPA_META_VideoTransform, sizeof(spa_meta_videotransform)))) {
        turn->transform = m_turn;
    }
    pw_stream_queue_buffer(m_pStream, buffer);
}

void Source::Follow(const std::string& line)
{
    std::istringstream words(line);
    std::string command;
    std::array<int, 4> numbers{};
    words >> command;
    for (int& number : numbers) {
        words >> number;
    }
    const auto [a, b, c, d] = numbers;
    const Colour colour{static_cast<uint8_t>(a), static_cast<uint8_t>(b), static_cast<uint8_t>(c)};
    const spa_rectangle size{static_cast<uint32_t>(a), static_cast<uint32_t>(b)};
    if (command == "fill") {
        m_upper = m_lower = colour;
    } else if (command == "half") {
        m_lower = colour;
    } else if (command == "turn") {
        m_turn = static_cast<uint32_t>(a);
    } else if (command == "crop") {
        m_crop = {{a, b}, {static_cast<uint32_t>(c), static_cast<uint32_t>(d)}};
    } else if (command == "bad") {
        m_bBad = a != 0;
    } else if (command == "rest") {
        m_bRest = a != 0;
    } else if (command == "tell") {
        m_nAwaited = a;
    } else if (command == "size") {
        m_size = size;
        std::array<uint8_t, 1024> memory{};
        spa_pod_builder builder{};
        spa_pod_builder_init(&builder, memory.data(), memory.size());
        const spa_pod* format = Format(builder);
        pw_stream_update_params(m_pStream, &format, 1);
    }
}

void Source::OnState(void* self, pw_stream_state /*old*/, pw_stream_state state, const char*)
{
    auto* source = static_cast<Source*>(self);
    if (state == PW_STREAM_STATE_PAUSED && !source->m_bTold) {
        source->m_bTold = true;
        std::cout << "node " << pw_stream_get_node_id(source->m_pStream) << std::endl;
    }
}

void Source::OnParameter(void* self, uint32_t id, const spa_pod* parameter)
{
    auto* source = static_cast<Source*>(self);
    spa_video_info_raw info{};
    if (id != SPA_PARAM_Format || parameter == nullptr ||
        spa_format_video_raw_parse(parameter, &info) < 0) {
        return;
    }
    source->m_agreed = info.size;
    const int row = static_cast<int>(info.size.width * 4);
    std::array<uint8_t, 1024> memory{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, memory.data(), memory.size());
    const auto meta = [&](uint32_t type, size_t size) {
        return static_cast<const spa_pod*>(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type,
            SPA_POD_Id(type), SPA_PARAM_META_size, SPA_POD_Int(static_cast<int>(size))));
    };
    std::array<const spa_pod*, 3> parameters{
        static_cast<const spa_pod*>(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
            SPA_POD_CHOICE_RANGE_Int(4, 2, 8), SPA_PARAM_BUFFERS_blocks, SPA_POD_Int(1),
            SPA_PARAM_BUFFERS_size, SPA_POD_Int(row * static_cast<int>(info.size.height)),
            SPA_PARAM_BUFFERS_stride, SPA_POD_Int(row), SPA_PARAM_BUFFERS_dataType,
            SPA_POD_CHOICE_FLAGS_Int(1 << SPA_DATA_MemFd))),
        meta(SPA_META_VideoCrop, sizeof(spa_meta_region)),
        meta(SPA_META_VideoTransform, sizeof(spa_meta_videotransform))};
    pw_stream_update_params(source->m_pStream, parameters.data(), parameters.size());
}

void Source::OnTimer(void* self, uint64_t /*expirations*/)
{
    pw_stream_trigger_process(static_cast<Source*>(self)->m_pStream);
}

void Source::OnInput(void* self, int /*descriptor*/, uint32_t /*mask*/)
{
    auto* source = static_cast<Source*>(self);
    do {
        std::string line;
        if (!std::getline(std::cin, line)) {
            pw_main_loop_quit(source->m_pLoop);
            return;
        }
        source->Follow(line);
    } while (std::cin.rdbuf()->in_avail() > 0);
}

} // namespace

int main(int count, char** values)
{
    pw_init(nullptr, nullptr);
    std::ios::sync_with_stdio(false);
    if (count != 4) {
        return 1;
    }
    Source source(static_cast<uint32_t>(std::atoi(values[1])),
                  static_cast<uint32_t>(std::atoi(values[2])),
                  static_cast<uint32_t>(std::atoi(values[3])));
    return source.Run() ? 0 : 1;
}
