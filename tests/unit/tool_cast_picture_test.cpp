#include "tool/screen/portal/cast_picture.h"

#include <QTest>

#include <array>
#include <cstdlib>
#include <spa/buffer/meta.h>
#include <spa/param/video/format-utils.h>
#include <spa/pod/builder.h>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

using namespace tool;

namespace {

constexpr int kWidth = 8;
constexpr int kHeight = 4;
constexpr int kRow = kWidth * 4;
constexpr uint32_t kBytes = kRow * kHeight;

// A buffer as PipeWire hands it out, with its metadata.
struct Buffer
{
    Buffer()
    {
        metas[0] = {SPA_META_Header, sizeof header, &header};
        metas[1] = {SPA_META_VideoCrop, sizeof crop, &crop};
        metas[2] = {SPA_META_VideoTransform, sizeof transform, &transform};
        chunk.size = kBytes;
        chunk.stride = kRow;
        data.type = SPA_DATA_MemPtr;
        data.maxsize = kBytes;
        data.data = memory.data();
        data.chunk = &chunk;
        buffer.n_metas = static_cast<uint32_t>(metas.size());
        buffer.metas = metas.data();
        buffer.n_datas = 1;
        buffer.datas = &data;
    }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    std::optional<SourcePicture> Picture(const CastFormat& format = {kWidth, kHeight,
                                                                     PixelOrder::Rgb}) const
    {
        return PictureIn(buffer, format);
    }
    bool IsAt(const SourcePicture& picture, int x, int y) const
    {
        return picture.first == &memory[static_cast<size_t>(y) * kRow + static_cast<size_t>(x) * 4];
    }

    std::vector<uint8_t> memory = std::vector<uint8_t>(kBytes); // a sanitizer sees its end
    spa_meta_header header{};
    spa_meta_region crop{};
    spa_meta_videotransform transform{};
    std::array<spa_meta, 3> metas{};
    spa_chunk chunk{};
    spa_data data{};
    spa_buffer buffer{};
};

// An agreed format, as PipeWire describes it.
class FormatParameter
{
public:
    FormatParameter(uint32_t format, uint32_t width, uint32_t height, bool modifier = false,
                    uint32_t type = SPA_MEDIA_TYPE_video)
    {
        spa_pod_builder builder{};
        spa_pod_builder_init(&builder, m_memory.data(), static_cast<uint32_t>(m_memory.size()));
        spa_pod_frame object;
        spa_pod_builder_push_object(&builder, &object, SPA_TYPE_OBJECT_Format, SPA_PARAM_Format);
        spa_pod_builder_prop(&builder, SPA_FORMAT_mediaType, 0);
        spa_pod_builder_id(&builder, type);
        spa_pod_builder_prop(&builder, SPA_FORMAT_mediaSubtype, 0);
        spa_pod_builder_id(&builder, SPA_MEDIA_SUBTYPE_raw);
        spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_format, 0);
        spa_pod_builder_id(&builder, format);
        if (modifier) {
            spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_modifier, 0);
            spa_pod_builder_long(&builder, 0);
        }
        spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_size, 0);
        spa_pod_builder_rectangle(&builder, width, height);
        m_parameter = static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &object));
    }
    std::optional<CastFormat> Read() const { return ReadFormat(m_parameter); }

private:
    alignas(8) std::array<uint8_t, 512> m_memory{};
    const spa_pod* m_parameter = nullptr;
};

} // namespace

class ToolCastPictureTest : public QObject
{
    Q_OBJECT

private slots:
    void pictureIsAllOfTheMemory()
    {
        const Buffer buffer;
        const auto picture = buffer.Picture();
        QVERIFY2(picture && buffer.IsAt(*picture, 0, 0), "the picture is not where it lies");
        QCOMPARE(picture->width, kWidth);
        QCOMPARE(picture->height, kHeight);
        QCOMPARE(picture->stride, kRow);
        QCOMPARE(picture->transform, 0);
        QVERIFY(picture->order == PixelOrder::Rgb);
    }

    void bufferWithoutAWholePictureIsPassedOver_data()
    {
        QTest::addColumn<uint>("size");
        QTest::addColumn<uint>("offset");
        QTest::addColumn<int>("stride");
        QTest::addColumn<uint>("memory");
        QTest::newRow("no content") << 0U << 0U << kRow << kBytes;
        QTest::newRow("offset beyond the memory") << kBytes << kBytes << kRow << kBytes;
        QTest::newRow("offset by a byte") << kBytes << 1U << kRow << kBytes;
        QTest::newRow("huge offset") << kBytes << 0xfffffff0U << kRow << kBytes;
        QTest::newRow("rows beyond the memory") << kBytes << 0U << kRow + 4 << kBytes;
        QTest::newRow("rows too short") << kBytes << 0U << kRow - 4 << kBytes;
        QTest::newRow("rows backwards") << kBytes << 0U << -kRow << kBytes;
        QTest::newRow("huge rows") << kBytes << 0U << 0x7fffffff << kBytes;
        QTest::newRow("less memory than said") << 0xffffffffU << 0U << kRow << kBytes - 1;
    }

    void bufferWithoutAWholePictureIsPassedOver()
    {
        QFETCH(uint, size);
        QFETCH(uint, offset);
        QFETCH(int, stride);
        QFETCH(uint, memory);
        Buffer buffer;
        buffer.chunk.size = size;
        buffer.chunk.offset = offset;
        buffer.chunk.stride = stride;
        buffer.data.maxsize = memory;
        QVERIFY2(!buffer.Picture(), "memory beyond the buffer would be read");
    }

    void sizeThatIsSaidDoesNotCount()
    {
        Buffer buffer;
        for (const uint32_t size : {1U, kBytes - 1, kBytes + 1, 0xffffffffU}) {
            buffer.chunk.size = size;
            QVERIFY2(buffer.Picture(), qPrintable(QString("no picture with %1 bytes").arg(size)));
        }
    }

    void rowsWithoutALengthAreDense()
    {
        Buffer buffer;
        buffer.chunk.stride = 0;
        QCOMPARE(buffer.Picture().value_or(SourcePicture{}).stride, kRow);
    }

    void damagedPictureIsPassedOver()
    {
        Buffer buffer;
        buffer.header.flags = SPA_META_HEADER_FLAG_CORRUPTED;
        QVERIFY2(!buffer.Picture(), "the header's flag is not respected");
        buffer.header.flags = 0;
        buffer.chunk.flags = SPA_CHUNK_FLAG_CORRUPTED;
        QVERIFY2(!buffer.Picture(), "the chunk's flag is not respected");
    }

    void memoryThatIsMissingIsPassedOver()
    {
        Buffer buffer;
        buffer.data.data = nullptr;
        QVERIFY(!buffer.Picture());
        buffer.data.chunk = nullptr;
        QVERIFY(!buffer.Picture());
        buffer.buffer.n_datas = 0;
        QVERIFY(!buffer.Picture());
    }

    // To read beyond the end of a file in memory would end the recording with SIGBUS.
    void fileThatIsShorterThanSaidIsPassedOver()
    {
        Buffer buffer;
        const int file = memfd_create("picture", MFD_CLOEXEC);
        QCOMPARE(ftruncate(file, kBytes), 0);
        buffer.data.type = SPA_DATA_MemFd;
        buffer.data.fd = file;
        QVERIFY2(buffer.Picture(), "a whole file has no picture");
        QCOMPARE(ftruncate(file, kBytes - 1), 0);
        QVERIFY2(!buffer.Picture(), "a shorter file would be read");
        close(file);
    }

    void onlyTheVisiblePartIsShown()
    {
        Buffer buffer;
        buffer.crop.region = {{2, 1}, {4, 2}};
        const auto picture = buffer.Picture();
        QVERIFY2(picture && buffer.IsAt(*picture, 2, 1), "the part is not where it lies");
        QCOMPARE(picture->width, 4);
        QCOMPARE(picture->height, 2);
    }

    void partBeyondThePictureIsIgnored_data()
    {
        QTest::addColumn<int>("x");
        QTest::addColumn<int>("y");
        QTest::addColumn<uint>("width");
        QTest::addColumn<uint>("height");
        QTest::newRow("left of it") << -1 << 0 << 4U << 2U;
        QTest::newRow("above it") << 0 << -1 << 4U << 2U;
        QTest::newRow("too wide") << 5 << 0 << 4U << 2U;
        QTest::newRow("too high") << 0 << 3 << 4U << 2U;
        QTest::newRow("huge") << 0x7fffffff << 0x7fffffff << 0xffffffffU << 0xffffffffU;
        QTest::newRow("without a width") << 2 << 1 << 0U << 2U;
    }

    void partBeyondThePictureIsIgnored()
    {
        QFETCH(int, x);
        QFETCH(int, y);
        QFETCH(uint, width);
        QFETCH(uint, height);
        Buffer buffer;
        buffer.crop.region = {{x, y}, {width, height}};
        const auto picture = buffer.Picture();
        QVERIFY2(picture && buffer.IsAt(*picture, 0, 0), "memory beyond the buffer would be read");
        QCOMPARE(picture->width, kWidth);
        QCOMPARE(picture->height, kHeight);
    }

    void turnedMonitorIsKnown()
    {
        Buffer buffer;
        buffer.transform.transform = SPA_META_TRANSFORMATION_Flipped270;
        QCOMPARE(buffer.Picture().value_or(SourcePicture{}).transform, 7);
        buffer.transform.transform = 8;
        QCOMPARE(buffer.Picture().value_or(SourcePicture{}).transform, 0);
        buffer.transform.transform = 0xffffffff;
        QCOMPARE(buffer.Picture().value_or(SourcePicture{}).transform, 0);
    }

    void formatsAreThoseThatCanBeRead()
    {
        const auto read = [](uint32_t format) { return FormatParameter(format, 640, 480).Read(); };
        QVERIFY(read(SPA_VIDEO_FORMAT_BGRx) == (CastFormat{640, 480, PixelOrder::Bgr}));
        QVERIFY(read(SPA_VIDEO_FORMAT_RGBA) == (CastFormat{640, 480, PixelOrder::Rgb}));
        QVERIFY(read(SPA_VIDEO_FORMAT_xRGB_210LE) == (CastFormat{640, 480, PixelOrder::Bgr10}));
        QVERIFY(read(SPA_VIDEO_FORMAT_ABGR_210LE) == (CastFormat{640, 480, PixelOrder::Rgb10}));
        for (const uint32_t format : {SPA_VIDEO_FORMAT_UNKNOWN, SPA_VIDEO_FORMAT_NV12,
                                      SPA_VIDEO_FORMAT_RGB, SPA_VIDEO_FORMAT_xRGB}) {
            QVERIFY2(!read(format), qPrintable(QString("format %1 is read").arg(format)));
        }
        QVERIFY(!ReadFormat(nullptr));
    }

    void graphicsBuffersAndImpossibleSizesAreRefused()
    {
        const uint32_t known = SPA_VIDEO_FORMAT_BGRx;
        QVERIFY(!FormatParameter(known, 640, 480, true).Read());
        QVERIFY(!FormatParameter(known, 640, 480, false, SPA_MEDIA_TYPE_audio).Read());
        QVERIFY(!FormatParameter(known, 0, 480).Read());
        QVERIFY(!FormatParameter(known, 640, 0).Read());
        QVERIFY(!FormatParameter(known, largestSide + 1, 480).Read());
        QVERIFY(!FormatParameter(known, 640, 0xffffffff).Read());
    }

    void onlyMemoryIsAskedFor()
    {
        CastParameters parameters;
        const spa_pod* offered = parameters.OfferedFormats();
        QVERIFY2(spa_pod_find_prop(offered, nullptr, SPA_FORMAT_VIDEO_modifier) == nullptr,
                 "buffers of a graphics card are asked for");
        const auto buffers = parameters.Buffers();
        const spa_pod_prop* type =
            spa_pod_find_prop(buffers[0], nullptr, SPA_PARAM_BUFFERS_dataType);
        QVERIFY(type != nullptr);
        uint32_t count = 0;
        uint32_t choice = 0;
        const spa_pod* value = spa_pod_get_values(&type->value, &count, &choice);
        QCOMPARE(SPA_POD_VALUE(struct spa_pod_int, value),
                 (1 << SPA_DATA_MemFd) | (1 << SPA_DATA_MemPtr));
    }
};

QTEST_APPLESS_MAIN(ToolCastPictureTest)
#include "tool_cast_picture_test.moc"
