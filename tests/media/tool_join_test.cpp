// The decisions behind a merge: what a part is, what ffmpeg is asked to do.
#include "tests/support/tool_movies.h"
#include "tool/edit/conversion.h"
#include "tool/edit/join.h"
#include "tool/edit/transport_stream.h"
#include "tool/ffmpeg/ffmpeg_program.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <random>

Q_DECLARE_METATYPE(tool::Intermediate)
Q_DECLARE_METATYPE(tool::MovieTrack)

static QString Joined(const tool::Arguments& arguments)
{
    QStringList list;
    for (const std::string& argument : arguments) {
        list << QString::fromStdString(argument);
    }
    return list.join(' ');
}

class ToolJoinTest : public QObject
{
    Q_OBJECT

private slots:
    void partsAreDividedAtBars();
    void barsInNamesAreFound();
    void intermediateSuitsTheMovie_data();
    void intermediateSuitsTheMovie();
    void plainMovieIsConvertedAsAsked();
    void descriptionsAreReadFromFfmpegsText_data();
    void descriptionsAreReadFromFfmpegsText();
    void whatNoVideoCanBeIsNotTakenFromFfmpegsText_data();
    void whatNoVideoCanBeIsNotTakenFromFfmpegsText();
    void silentAndBlackPartsAreMade();
    void copiedSoundIsThinnedWhereFfmpegCan();
    void shapeTellsStreamsApart();
    void damagedStreamsAreHarmless();
    void programIsAskedAndItsErrorsRead();
};

void ToolJoinTest::partsAreDividedAtBars()
{
    QVERIFY(tool::SplitList("/d/1.ts|/d/2.ts|") ==
            std::vector<std::string>({"/d/1.ts", "/d/2.ts"}));
    QVERIFY(tool::SplitList("").empty());
}

void ToolJoinTest::barsInNamesAreFound()
{
    const QTemporaryDir folder;
    QStringList names;
    for (const char* name : {"a|b|1", "2", "||3"}) {
        names << folder.filePath(name);
        QFile file(names.last());
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    const auto parts = tool::SplitList((names.join('|') + '|').toStdString());
    QCOMPARE(Joined(parts), names.join(' '));
    QVERIFY(!tool::CanBeCopied(parts));
}

void ToolJoinTest::intermediateSuitsTheMovie_data()
{
    using tool::Intermediate;
    using tool::TrackKind;
    QTest::addColumn<tool::MovieTrack>("picture");
    QTest::addColumn<tool::MovieTrack>("sound");
    QTest::addColumn<Intermediate>("expected");
    const auto track = [](TrackKind kind, const char* codec, int64_t end) {
        tool::MovieTrack made;
        made.kind = kind;
        made.codec = codec;
        made.start = 0;
        made.end = end;
        return made;
    };
    const tool::MovieTrack h264 = track(TrackKind::Video, "avc1", 5000000);
    const tool::MovieTrack aac = track(TrackKind::Audio, "aac ", 5010000);
    const auto row = [&](const char* name, auto change, Intermediate expected) {
        tool::MovieTrack picture = h264;
        tool::MovieTrack sound = aac;
        change(picture, sound);
        QTest::newRow(name) << picture << sound << expected;
    };
    row(
        "as recorded", [](auto&, auto&) {}, Intermediate::AsAsked);
    row(
        "unknown codec", [](auto& p, auto&) { p.codec.clear(); }, Intermediate::AsAsked);
    row(
        "H.265", [](auto& p, auto&) { p.codec = "hvc1"; }, Intermediate::TransportStream);
    row(
        "VP9", [](auto& p, auto&) { p.codec = "vp09"; }, Intermediate::Movie);
    row(
        "MP3", [](auto&, auto& s) { s.codec = "mp4a"; }, Intermediate::Movie);
    row(
        "turned", [](auto& p, auto&) { p.transformed = true; }, Intermediate::Movie);
    row(
        "several edits", [](auto&, auto& s) { s.unusualEdits = true; }, Intermediate::Movie);
    row(
        "hidden beginning", [](auto& p, auto&) { p.trimmedStart = 1000000; }, Intermediate::Movie);
    row(
        "encoder's delay", [](auto&, auto& s) { s.trimmedStart = 21333; }, Intermediate::AsAsked);
    row(
        "short sound", [](auto&, auto& s) { s.end = 3500000; }, Intermediate::Movie);
    row(
        "recorded sound", [](auto&, auto& s) { s.end = 4800000; }, Intermediate::AsAsked);
    row(
        "long sound", [](auto&, auto& s) { s.end = 6000000; }, Intermediate::Movie);
    row(
        "unknown end", [](auto&, auto& s) { s.end.reset(); }, Intermediate::AsAsked);
}

void ToolJoinTest::intermediateSuitsTheMovie()
{
    QFETCH(tool::MovieTrack, picture);
    QFETCH(tool::MovieTrack, sound);
    QFETCH(tool::Intermediate, expected);
    tool::Movie movie;
    movie.tracks = {picture, sound};
    QVERIFY(tool::ChooseIntermediate(movie) == expected);
}

void ToolJoinTest::plainMovieIsConvertedAsAsked()
{
    const tool::Convert convert{"a", "1.ts"};
    QVERIFY(tool::ChooseIntermediate(std::nullopt) == tool::Intermediate::AsAsked);
    QCOMPARE(Joined(tool::ConversionCommand(convert, tool::Intermediate::AsAsked)),
             QString("-i a -vcodec copy -acodec copy -bsf:v h264_mp4toannexb 1.ts"));
    QCOMPARE(Joined(tool::ConversionCommand(convert, tool::Intermediate::TransportStream)),
             QString("-i a -vcodec copy -acodec copy 1.ts"));
    QCOMPARE(Joined(tool::ConversionCommand(convert, tool::Intermediate::Movie)),
             QString("-i a -vcodec copy -acodec copy -f mp4 1.ts"));
}

void ToolJoinTest::descriptionsAreReadFromFfmpegsText_data()
{
    QTest::addColumn<QString>("indent");
    QTest::newRow("ffmpeg 5") << "  ";
    QTest::newRow("ffmpeg 4") << "    ";
}

void ToolJoinTest::descriptionsAreReadFromFfmpegsText()
{
    QFETCH(QString, indent);
    QString text =
        "Input #0, mpegts, from '1.ts':\n  Duration: 00:01:02.50, start: 1.400000, bitrate: 1 "
        "kb/s\n"
        "  Stream #0:0[0x100]: Video: h264 (High) ([27][0][0][0] / 0x001B), yuv420p(tv, bt709, "
        "progressive), 1280x720 [SAR 1:1 DAR 16:9], 29.97 fps, 29.97 tbr, 90k tbn\n"
        "  Stream #0:1[0x101](und): Audio: aac (LC) ([15][0][0][0] / 0x000F), 44100 Hz, 5.1(side), "
        "fltp, 72 kb/s\n"
        "Input #1, mov, from '2.ts':\n"
        "  Stream #1:0[0x1](und): Video: mpeg4 (mp4v / 0x7634706D), yuv420p, 720x576 [SAR 16:15 "
        "DAR "
        "4:3], 12.5 fps, 25 tbr, 12800 tbn (default)\n    Side data:\n"
        "      displaymatrix: rotation of -90.00 degrees\n"
        "Input #2, mov, from '3.ts':\n"
        "  Stream #2:0: Video: h264, yuv420p, 101x99, 90k tbr, 90k tbn\n";
    text.replace("  Stream #", indent + "Stream #");
    const auto parts = tool::ParseDescriptions(text.toStdString());
    QCOMPARE(parts.size(), size_t{3});
    QCOMPARE(parts[0].width, 1280);
    QCOMPARE(parts[0].height, 720);
    QCOMPARE(parts[0].rate, std::string("30000/1001"));
    QCOMPARE(parts[0].sampleRate, 44100);
    QCOMPARE(parts[0].channels, std::string("5.1(side)"));
    QCOMPARE(parts[0].duration, 62.5);
    QCOMPARE(parts[1].width, 576);
    QCOMPARE(parts[1].height, 768);
    QCOMPARE(parts[1].rate, std::string("12.5"));
    QVERIFY(!parts[1].HasSound());
    QCOMPARE(parts[2].width % 2, 0);
    QCOMPARE(parts[2].height % 2, 0);
    QCOMPARE(parts[2].rate, std::string("30"));
    QVERIFY(tool::ParseDescriptions("a.ts: No such file or directory\n").empty());
}

void ToolJoinTest::whatNoVideoCanBeIsNotTakenFromFfmpegsText_data()
{
    QTest::addColumn<QString>("stream");
    QTest::addColumn<QString>("read"); // size, frame rate, sample rate, channels
    const char* video = "Video: h264, yuv420p, ";
    const char* audio = "Audio: aac, ";
    const auto row = [](const char* name, const QString& stream, const char* read) {
        QTest::newRow(name) << stream << read;
    };
    row("larger than any", QString(video) + "999999999x2, 25 fps", "0x0 25 0 ");
    row("below nothing", QString(video) + "-4x-4, 25 fps", "0x0 25 0 ");
    row("size after one that is none", QString(video) + "0x0, 64x48, 25 fps", "64x48 25 0 ");
    row("pixels wider than any picture", QString(video) + "64x48 [SAR 99999999:1], 25 fps",
        "64x48 25 0 ");
    row("pixels without a width", QString(video) + "64x48 [SAR 1:9999], 25 fps", "64x48 25 0 ");
    row("a rate that goes on", QString(video) + "64x48, 25[x];y fps", "64x48 30 0 ");
    row("a rate that ends with its point", QString(video) + "64x48, 29. fps", "64x48 30 0 ");
    row("a rate of two points", QString(video) + "64x48, 2.5.1 fps", "64x48 30 0 ");
    row("no finite rate", QString(video) + "64x48, inf fps", "64x48 30 0 ");
    row("more samples than an int", QString(audio) + "99999999999 Hz, mono, fltp", "0x0  0 ");
    row("no finite sample rate", QString(audio) + "nan Hz, mono, fltp", "0x0  0 ");
    row("channels that end a filter", QString(audio) + "8000 Hz, mono;x[y], fltp",
        "0x0  8000 stereo");
    row("no channels", QString(audio) + "8000 Hz, , fltp", "0x0  8000 stereo");
}

void ToolJoinTest::whatNoVideoCanBeIsNotTakenFromFfmpegsText()
{
    QFETCH(QString, stream);
    QFETCH(QString, read);
    const QString text = "Input #0, mov, from '1.ts':\n  Duration: -1:-1:-1.00, start: 0\n"
                         "  Stream #0:0: " +
                         stream + "\n";
    const auto parts = tool::ParseDescriptions(text.toStdString());
    QCOMPARE(parts.size(), size_t{1});
    const tool::PartDescription& part = parts.front();
    QCOMPARE(QString("%1x%2 %3 %4 %5")
                 .arg(part.width)
                 .arg(part.height)
                 .arg(QString::fromStdString(part.rate))
                 .arg(part.sampleRate)
                 .arg(QString::fromStdString(part.channels)),
             read);
    QVERIFY2(part.duration >= 0, "a part of less than no time");
}

void ToolJoinTest::silentAndBlackPartsAreMade()
{
    const std::vector<tool::PartDescription> parts = {{160, 120, "25", 0, "", 2},
                                                      {0, 0, "", 48000, "stereo", 3},
                                                      {320, 240, "60", 44100, "mono", 4}};
    const QString line = Joined(tool::EncodingJoin({"1.ts", "2.ts", "3.ts"}, parts, "o.mp4"));
    QVERIFY2(line.startsWith("-threads 1 -i 1.ts -threads 1 -i 2.ts -threads 1 -i 3.ts -filter_"),
             qPrintable(line));
    QVERIFY2(line.contains("anullsrc=r=48000:cl=stereo"), qPrintable(line));
    QVERIFY2(line.contains("color=black:s=160x120:r=25:d=3"), qPrintable(line));
    QVERIFY2(line.contains("concat=n=3:v=1:a=1[v][a]"), qPrintable(line));
    QVERIFY2(line.contains("-preset ultrafast") && line.endsWith(" o.mp4"), qPrintable(line));
}

void ToolJoinTest::copiedSoundIsThinnedWhereFfmpegCan()
{
    const tool::Join join{"a|b|", "o"};
    QCOMPARE(Joined(tool::CopyingJoin(join, false)),
             QString("-i concat:a|b| -acodec copy -vcodec copy -bsf:a aac_adtstoasc o"));
    QVERIFY(Joined(tool::CopyingJoin(join, true)).contains("-bsf:a aac_adtstoasc,noise=drop="));
}

void ToolJoinTest::shapeTellsStreamsApart()
{
    const QTemporaryDir folder;
    const auto path = [&](const char* name) { return folder.filePath(name); };
    const auto make = [&](const char* name, const QStringList& more) {
        return MakeMovie(PictureInput(0.5) + ToneInput(0.5) + PlainCodecs() + more +
                         QStringList(path(name)));
    };
    QCOMPARE(make("a.ts", {}), QByteArray());
    QCOMPARE(make("b.ts", {"-t", "0.3"}), QByteArray());
    QCOMPARE(make("other picture.ts", {"-r", "30"}), QByteArray());
    QCOMPARE(make("other sound.ts", {"-ar", "44100"}), QByteArray());
    QCOMPARE(make("other kind.ts", {"-c:a", "libmp3lame"}), QByteArray());
    const auto fits = [&](const char* name) {
        return tool::FitTogether({path("a.ts").toStdString(), path(name).toStdString()});
    };
    QVERIFY(fits("a.ts"));
    QVERIFY(fits("b.ts"));
    QVERIFY(!fits("other picture.ts"));
    QVERIFY(!fits("other sound.ts"));
    QVERIFY(!fits("other kind.ts"));
    QVERIFY(!fits("missing.ts"));
    QVERIFY(!tool::ReadTransportStream(path("other kind.ts").toStdString()));
    const auto shape = tool::ReadTransportStream(path("a.ts").toStdString());
    QVERIFY(shape && shape->pictureType == 0x1b && shape->soundType == 0x0f);
    QVERIFY2(shape->parameterSets.size() > 20,
             qPrintable(QString::number(shape->parameterSets.size())));
}

void ToolJoinTest::damagedStreamsAreHarmless()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("a.ts");
    QCOMPARE(MakeMovie(PictureInput(0.2) + ToneInput(0.2) + PlainCodecs() + QStringList(path)),
             QByteArray());
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray whole = file.readAll().left(7520); // 40 packets; the first 6 are damaged
    std::mt19937 random(20180305);                      // NOLINT(cert-msc*): repeatable
    int unread = 0;
    for (int round = 0; round < 2000; ++round) {
        QByteArray bytes = whole;
        for (auto changes = 1 + random() % 8; changes > 0; --changes) {
            const auto at = static_cast<qsizetype>(random() % size_t{1128});
            bytes[at] = static_cast<char>(random() % 4 == 0 ? 0xff : random() & 0xffU);
        }
        QFile damaged(folder.filePath("damaged.ts"));
        QVERIFY(damaged.open(QIODevice::WriteOnly) && damaged.write(bytes) == bytes.size());
        damaged.close();
        unread += tool::ReadTransportStream(damaged.fileName().toStdString()) ? 0 : 1;
    }
    QVERIFY2(unread > 20 && unread < 2000, qPrintable(QString::number(unread)));
}

void ToolJoinTest::programIsAskedAndItsErrorsRead()
{
    const auto asked = [](const char* script) { return tool::Ask("/bin/sh", {"-c", script}); };
    QCOMPARE(asked("echo a; echo 'b c' >&2; read x; echo $? >&2"), std::string("b c\n1\n"));
    QCOMPARE(asked("i=0; while [ $i -lt 20000 ]; do echo 12345 >&2; i=$((i + 1)); done").size(),
             size_t{120000});
    QCOMPARE(asked("echo dying >&2; kill -9 $$"), std::string("dying\n"));
    QCOMPARE(tool::Ask("/no/such/program", {}), std::string());
}

QTEST_GUILESS_MAIN(ToolJoinTest)
#include "tool_join_test.moc"
