// Which transport streams can be joined without re-encoding, with streams made byte by byte.
#include "tool/edit/join.h"
#include "tool/edit/transport_stream.h"

#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

constexpr int kTableId = 0x100;
constexpr int kPictureId = 0x101;
constexpr int kSoundId = 0x102;
constexpr char kH264 = 0x1b;
constexpr char kH265 = 0x24;
constexpr char kAac = 0x0f;

QByteArray TwoBytes(int value)
{
    return QByteArray(1, static_cast<char>(value >> 8)) + static_cast<char>(value & 0xff);
}

// A packet with a start indicator, padded with an adaptation field.
QByteArray Packet(int id, const QByteArray& payload)
{
    const auto fill = static_cast<int>(188 - 4 - payload.size());
    const QByteArray field =
        fill == 0 ? QByteArray() : static_cast<char>(fill - 1) + QByteArray(fill - 1, '\0');
    return "\x47" + TwoBytes(0x4000 | id) + (fill == 0 ? '\x10' : '\x30') + field + payload;
}

// A section with pointer, length and room for a checksum, which nobody checks.
QByteArray Section(char table, const QByteArray& content)
{
    const auto size = static_cast<int>(content.size() + 5 + 4);
    return QByteArray(1, '\0') + table + TwoBytes(0xb000 | size) +
           QByteArray::fromHex("0001c10000") + content + QByteArray(4, '\0');
}

struct Track
{
    char type = 0;
    int id = 0;
};

// The tables of a stream with these tracks.
QByteArray Tables(const QList<Track>& tracks)
{
    QByteArray list = TwoBytes(0xe000 | kPictureId) + TwoBytes(0xf000);
    for (const Track& track : tracks) {
        list += track.type + TwoBytes(0xe000 | track.id) + TwoBytes(0xf000);
    }
    return Packet(0, Section(0, TwoBytes(1) + TwoBytes(0xe000 | kTableId))) +
           Packet(kTableId, Section(2, list));
}

// Two packets, because the start of the second one ends the content of the first.
QByteArray Twice(int id, const QByteArray& content)
{
    const QByteArray header = QByteArray::fromHex("000001e00000800000");
    return Packet(id, header + content) + Packet(id, header + content);
}

QByteArray Unit(const QByteArray& hex)
{
    return QByteArray::fromHex("00000001" + hex);
}

// Profile LC, 44100 Hz, two channels.
const QByteArray kSound = QByteArray::fromHex("fff15080") + QByteArray(20, 'x');
const QByteArray kPicture = Unit("6742aa") + Unit("68ceee") + Unit("658811");

QByteArray Stream(const QByteArray& picture, const QByteArray& sound = kSound, char type = kH264)
{
    return Tables({{type, kPictureId}, {kAac, kSoundId}}) + Twice(kPictureId, picture) +
           Twice(kSoundId, sound);
}

} // namespace

class ToolTransportStreamTest : public QObject
{
    Q_OBJECT

private slots:
    void shapeIsRead();
    void whatTellsStreamsApart_data();
    void whatTellsStreamsApart();
    void whatHasNoShape_data();
    void whatHasNoShape();
    void nameWithABarIsNotCopied();

private: // NOLINT(readability-redundant-access-specifiers): what follows is no test
    std::optional<tool::StreamShape> Shape(const QByteArray& stream)
    {
        return tool::ReadTransportStream(Stored("stream.ts", stream));
    }
    std::string Stored(const QString& name, const QByteArray& stream)
    {
        QFile file(m_folder.filePath(name));
        return file.open(QIODevice::WriteOnly) && file.write(stream) == stream.size()
                   ? file.fileName().toStdString()
                   : std::string();
    }

    QTemporaryDir m_folder;
};

void ToolTransportStreamTest::shapeIsRead()
{
    const auto shape = Shape(Stream(kPicture));
    QVERIFY(shape.has_value());
    QCOMPARE(shape->pictureType, uint8_t{kH264});
    const QByteArray sets = QByteArray::fromHex("0000016742aa00000168ceee");
    QCOMPARE(QByteArray::fromStdString(shape->parameterSets).toHex(), sets.toHex());
    QCOMPARE(shape->soundType, uint8_t{kAac});
    const auto mute = Shape(Tables({{kH264, kPictureId}}) + Twice(kPictureId, kPicture));
    QVERIFY(mute && mute->soundType == 0 && mute->parameterSets == shape->parameterSets);
    const auto dark = Shape(Tables({{kAac, kSoundId}}) + Twice(kSoundId, kSound));
    QVERIFY(dark && dark->pictureType == 0 && dark->soundHeader == shape->soundHeader);
}

void ToolTransportStreamTest::whatTellsStreamsApart_data()
{
    QTest::addColumn<QByteArray>("one");
    QTest::addColumn<QByteArray>("other");
    QTest::addColumn<bool>("alike");
    const auto sound = [](const QByteArray& header) {
        return Stream(kPicture, QByteArray::fromHex(header) + QByteArray(20, 'x'));
    };
    const auto row = [](const char* name, const QByteArray& one, const QByteArray& other,
                        bool alike) { QTest::newRow(name) << one << other << alike; };
    row("the same", Stream(kPicture), Stream(kPicture), true);
    row("other pictures", Stream(kPicture), Stream(kPicture + Unit("6577")), true);
    row("other sound", Stream(kPicture), Stream(kPicture, kSound + "more"), true);
    row("sequence", Stream(kPicture), Stream(Unit("6743aa") + Unit("68ceee") + Unit("6588")),
        false);
    row("picture set", Stream(kPicture), Stream(Unit("6742aa") + Unit("68cfee") + Unit("6588")),
        false);
    row("sampling rate", sound("fff15080"), sound("fff14c80"), false);
    row("channels", sound("fff15080"), sound("fff15040"), false);
    row("seven channels and one", sound("fff15180"), sound("fff15080"), false);
    row("profile", sound("fff15080"), sound("fff11080"), false);
    row("private bit", sound("fff15080"), sound("fff15280"), true);
    const auto h265 = [](const QByteArray& video, const QByteArray& sequence,
                         const QByteArray& picture) {
        return Stream(Unit(video) + Unit(sequence) + Unit(picture) + Unit("2601af"), kSound, kH265);
    };
    const QByteArray usual = h265("40010c", "420101", "4401c1");
    row("H.265, the same", usual, h265("40010c", "420101", "4401c1"), true);
    row("H.265, video set", usual, h265("40010d", "420101", "4401c1"), false);
    row("H.265, sequence", usual, h265("40010c", "420102", "4401c1"), false);
    row("H.265, picture set", usual, h265("40010c", "420101", "4401c2"), false);
}

void ToolTransportStreamTest::whatTellsStreamsApart()
{
    QFETCH(QByteArray, one);
    QFETCH(QByteArray, other);
    QFETCH(bool, alike);
    const std::vector<std::string> paths = {Stored("1.ts", one), Stored("2.ts", other)};
    QVERIFY(tool::ReadTransportStream(paths[0]) && tool::ReadTransportStream(paths[1]));
    QCOMPARE(tool::FitTogether(paths), alike);
}

void ToolTransportStreamTest::whatHasNoShape_data()
{
    QTest::addColumn<QByteArray>("stream");
    const QByteArray content = Twice(kPictureId, kPicture) + Twice(kSoundId, kSound);
    const auto tracks = [&](const QList<Track>& list) { return Tables(list) + content; };
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("no packets") << QByteArray(1000, 'x');
    QTest::newRow("no tracks") << tracks({});
    QTest::newRow("two pictures") << tracks(
        {{kH264, 0x103}, {kH264, kPictureId}, {kAac, kSoundId}});
    QTest::newRow("two sounds") << tracks({{kH264, kPictureId}, {kAac, 0x103}, {kAac, kSoundId}});
    QTest::newRow("another sound") << tracks({{kH264, kPictureId}, {'\x03', kSoundId}});
    QTest::newRow("no parameter sets") << Stream(Unit("6588") + Unit("6577"));
    QTest::newRow("no sound header") << Stream(kPicture, QByteArray(24, 'x'));
    QTest::newRow("channels told elsewhere")
        << Stream(kPicture, QByteArray::fromHex("fff15000") + QByteArray(20, 'x'));
    QTest::newRow("sound is missing")
        << Tables({{kH264, kPictureId}, {kAac, kSoundId}}) + Twice(kPictureId, kPicture);
}

void ToolTransportStreamTest::whatHasNoShape()
{
    QFETCH(QByteArray, stream);
    QVERIFY(!Shape(stream));
}

// ffmpeg would take the bar for the end of the name.
void ToolTransportStreamTest::nameWithABarIsNotCopied()
{
    const std::string plain = Stored("plain.ts", Stream(kPicture));
    const std::string bar = Stored("a|b.ts", Stream(kPicture));
    QVERIFY(tool::FitTogether({plain, bar}));
    QVERIFY(tool::CanBeCopied({plain, plain}));
    QVERIFY(!tool::CanBeCopied({plain, bar}));
}

QTEST_APPLESS_MAIN(ToolTransportStreamTest)
#include "tool_transport_stream_test.moc"
