// The decisions behind a merge: what a part is, what ffmpeg is asked to do.
#include "tests/support/tool_movies.h"
#include "tool/edit/copyable_part.h"
#include "tool/edit/copying_join.h"
#include "tool/edit/encoding_join.h"
#include "tool/edit/join.h"
#include "tool/edit/source_file.h"
#include "tool/ffmpeg/ffmpeg_program.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <random>

Q_DECLARE_METATYPE(tool::Movie)

static QString Joined(const std::vector<std::string>& arguments)
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
    void onlyWhatCanBeCopiedIs_data();
    void onlyWhatCanBeCopiedIs();
    void fragmentsTellTheLength();
    void lengthsAreExactAndDoNotAddUpErrors();
    void silentAndBlackPartsAreMade();
    void copiedSoundIsThinnedWhereFfmpegCan();
    void formatTellsMoviesApart();
    void damagedMoviesAreHarmless();
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
}

// As recorded: 150 frames and a little more sound.
static tool::Movie Recorded()
{
    tool::MovieTrack picture;
    picture.kind = tool::TrackKind::Video;
    picture.codec = "avc1";
    picture.start = 0;
    picture.end = 5005000;
    picture.id = 1;
    picture.timescale = 30000;
    picture.mediaDuration = 150150;
    picture.configuration = std::string("\1\x42\xc0\x1e\xff\xe1", 6);
    tool::MovieTrack sound;
    sound.kind = tool::TrackKind::Audio;
    sound.codec = "aac ";
    sound.start = 0;
    sound.end = 5010000;
    sound.id = 2;
    sound.timescale = 48000;
    sound.mediaDuration = 241504;
    sound.trimmedTicks = 1024;
    sound.configuration = "\x11\x90";
    tool::Movie movie;
    movie.tracks = {picture, sound};
    return movie;
}

void ToolJoinTest::onlyWhatCanBeCopiedIs_data()
{
    QTest::addColumn<tool::Movie>("movie");
    QTest::addColumn<bool>("copied");
    const auto row = [&](const char* name, bool copied, auto change) {
        tool::Movie movie = Recorded();
        change(movie.tracks[0], movie.tracks[1]);
        QTest::newRow(name) << movie << copied;
    };
    row("as recorded", true, [](auto&, auto&) {});
    row("unknown codec", false, [](auto& p, auto&) { p.codec.clear(); });
    row("VP9", false, [](auto& p, auto&) { p.codec = "vp09"; });
    row("MP3", false, [](auto&, auto& s) { s.codec = "mp4a"; });
    row("another kind of track", true, [](auto&, auto& s) { s.kind = tool::TrackKind::Other; });
    row("parameter sets elsewhere", false, [](auto& p, auto&) { p.configuration[5] = '\xe0'; });
    row("no decoder's set-up", false, [](auto&, auto& s) { s.configuration.clear(); });
    row("H.265", true, [](auto& p, auto&) {
        p.codec = "hvc1";
        p.configuration = std::string(23, '\3');
    });
    row("H.265, parameter sets elsewhere", false, [](auto& p, auto&) {
        p.codec = "hev1";
        p.configuration = std::string(23, '\0');
    });
    row("turned", false, [](auto& p, auto&) { p.transformed = true; });
    row("several edits", false, [](auto&, auto& s) { s.unusualEdits = true; });
    row("hidden beginning", false, [](auto& p, auto&) { p.trimmedTicks = 30000; });
    row("hidden end", false, [](auto& p, auto&) { p.end = 4900000; });
    row("end rounded to milliseconds", true, [](auto& p, auto&) { p.end = 5004000; });
    row("short sound", false, [](auto&, auto& s) { s.end = 3500000; });
    row("recorded sound", true, [](auto&, auto& s) { s.end = 4800000; });
    row("long sound", false, [](auto&, auto& s) {
        s.mediaDuration = 48000 * 6;
        s.end = 6000000;
    });
    row("unknown end", false, [](auto& p, auto&) { p.end.reset(); });
    row("longer than numbers reach", false, [](auto& p, auto&) { p.mediaDuration = 1ULL << 63U; });
}

void ToolJoinTest::onlyWhatCanBeCopiedIs()
{
    QFETCH(tool::Movie, movie);
    QFETCH(bool, copied);
    const auto part = tool::DescribePart(movie, {});
    QCOMPARE(part.has_value(), copied);
    QVERIFY(!part || (part->ticks == 150150 && part->timescale == 30000));
}

void ToolJoinTest::fragmentsTellTheLength()
{
    tool::Movie movie = Recorded();
    movie.fragmented = true;
    QVERIFY2(!tool::DescribePart(movie, {}), "the length is not known");
    tool::FragmentedMovie fragments;
    fragments.tracks.resize(2);
    fragments.tracks[0].id = 2;
    fragments.tracks[1].id = 1;
    for (uint64_t i = 0; i < 235; ++i) {
        fragments.tracks[0].samples.push_back({0, i * 1024, 10, 1024, 0, true});
    }
    // Decoded in the order 0, 2, 1.
    fragments.tracks[1].samples = {{0, 0, 10, 1001, 2002, true},
                                   {0, 1001, 10, 1001, 3003, false},
                                   {0, 2002, 10, 1001, 1001, false}};
    movie.tracks[0].trimmedTicks = 2002;
    QVERIFY2(!tool::DescribePart(movie, fragments), "the sound is far longer");
    fragments.tracks[0].samples.resize(6);
    const auto part = tool::DescribePart(movie, fragments);
    QVERIFY(part && part->fragmented);
    QCOMPARE(part->ticks, uint64_t{3003});
    movie.tracks[0].emptyStart = 100000;
    QCOMPARE(tool::DescribePart(movie, fragments)->ticks, uint64_t{6003});
    fragments.tracks[1].samples.clear();
    QVERIFY2(!tool::DescribePart(movie, fragments), "there is no frame");
}

void ToolJoinTest::lengthsAreExactAndDoNotAddUpErrors()
{
    tool::CopyablePart part;
    part.ticks = 1001;
    part.timescale = 30000;
    part.hasVideo = true;
    const std::vector<tool::CopyablePart> parts(3000, part);
    QCOMPARE(tool::BeginOfPart(parts, 0), int64_t{0});
    QCOMPARE(tool::BeginOfPart(parts, 1), int64_t{33367});
    QCOMPARE(tool::BeginOfPart(parts, 2), int64_t{66733});
    QCOMPARE(tool::BeginOfPart(parts, 3000), int64_t{100100000});
    const QString line =
        Joined(tool::CopyingJoin({"file:a", "file:b", "file:c"}, {part, part, part}, true));
    QVERIFY2(line.contains("file 'file:a'\nduration 0.033367\nfile 'file:b'\nduration 0.033366\n"
                           "file 'file:c'\nduration 0.033367\n"),
             qPrintable(line));
}

void ToolJoinTest::silentAndBlackPartsAreMade()
{
    const std::vector<tool::PartDescription> parts = {{160, 120, "25", 0, "", 2},
                                                      {0, 0, "", 48000, "stereo", 3},
                                                      {320, 240, "60", 44100, "mono", 4}};
    const QString line = Joined(tool::EncodingJoin({"1.ts", "2.ts", "3.ts"}, parts));
    QVERIFY2(line.startsWith("-threads 1 -i 1.ts -threads 1 -i 2.ts -threads 1 -i 3.ts -filter_"),
             qPrintable(line));
    QVERIFY2(line.contains("anullsrc=r=48000:cl=stereo"), qPrintable(line));
    QVERIFY2(line.contains("color=black:s=160x120:r=25:d=3"), qPrintable(line));
    QVERIFY2(line.contains("concat=n=3:v=1:a=1[v][a]"), qPrintable(line));
    QVERIFY2(line.contains("-preset ultrafast"), qPrintable(line));
}

void ToolJoinTest::copiedSoundIsThinnedWhereFfmpegCan()
{
    tool::CopyablePart part;
    part.ticks = 1;
    part.timescale = 1;
    part.hasAudio = true;
    const auto line = [&](size_t count, bool drops) {
        return Joined(tool::CopyingJoin(std::vector<std::string>(count, "file:a"),
                                        std::vector<tool::CopyablePart>(count, part), drops));
    };
    QVERIFY2(line(2, true).contains("-bsf:a noise=drop="), qPrintable(line(2, true)));
    QVERIFY2(!line(2, false).contains("-bsf"), qPrintable(line(2, false)));
    QVERIFY2(!line(1, true).contains("-bsf"), "one part has no overlap");
    QVERIFY2(line(2, true).contains("-map 0:a:0 -c copy"), qPrintable(line(2, true)));
    QVERIFY2(!line(2, true).contains("0:v:0"), "there is no picture");
    part.hasAudio = false;
    part.hasVideo = true;
    QVERIFY2(!line(2, true).contains("-bsf"), "there is no sound");
}

static std::optional<tool::CopyablePart> PartOf(const QString& path)
{
    const auto source = tool::OpenSource(path.toStdString());
    return source ? tool::ReadCopyablePart(*source) : std::nullopt;
}

void ToolJoinTest::formatTellsMoviesApart()
{
    const QTemporaryDir folder;
    const auto path = [&](const char* name) { return folder.filePath(name); };
    const auto make = [&](const char* name, const QStringList& more) {
        return MakeMovie(PictureInput(0.5) + ToneInput(0.5) + PlainCodecs() + more +
                         QStringList(path(name)));
    };
    QCOMPARE(make("a.mp4", {}), QByteArray());
    QCOMPARE(make("b.mp4", {"-t", "0.3", "-b:a", "32k"}), QByteArray());
    QCOMPARE(make("other rate.mp4", {"-r", "30"}), QByteArray());
    QCOMPARE(make("other timescale.mp4", {"-video_track_timescale", "90000"}), QByteArray());
    QCOMPARE(make("other shape.mp4", {"-aspect", "2"}), QByteArray());
    QCOMPARE(make("other sound.mp4", {"-ar", "44100"}), QByteArray());
    QCOMPARE(make("stereo.mp4", {"-ac", "2"}), QByteArray());
    QCOMPARE(make("sound first.mp4", {"-map", "1", "-map", "0"}), QByteArray());
    QCOMPARE(make("no sound.mp4", {"-an"}), QByteArray());
    QCOMPARE(make("other kind.mp4", {"-c:a", "libmp3lame"}), QByteArray());
    const auto first = PartOf(path("a.mp4"));
    QVERIFY(first && first->hasVideo && first->hasAudio && first->format.size() == 2);
    const auto fits = [&](const char* name) {
        const auto other = PartOf(path(name));
        return other && other->format == first->format;
    };
    QVERIFY(fits("a.mp4"));
    QVERIFY(fits("b.mp4"));
    for (const char* other : {"other rate.mp4", "other timescale.mp4", "other shape.mp4",
                              "other sound.mp4", "stereo.mp4", "sound first.mp4", "no sound.mp4"}) {
        QVERIFY2(PartOf(path(other)), other);
        QVERIFY2(!fits(other), other);
    }
    QVERIFY(!PartOf(path("other kind.mp4")));
    QVERIFY(!PartOf(path("missing.mp4")));
}

void ToolJoinTest::damagedMoviesAreHarmless()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("a.mp4");
    QCOMPARE(MakeMovie(PictureInput(0.2) + ToneInput(0.2) + PlainCodecs() +
                       QStringList{"-movflags", "faststart", path}),
             QByteArray());
    const QByteArray whole = Content(path);
    std::mt19937 random(20180305); // NOLINT(cert-msc*): repeatable
    int unread = 0;
    for (int round = 0; round < 2000; ++round) {
        QByteArray bytes = whole;
        for (auto changes = 1 + random() % 8; changes > 0; --changes) {
            const auto at = static_cast<qsizetype>(random() % size_t{2000});
            bytes[at] = static_cast<char>(random() % 4 == 0 ? 0xff : random() & 0xffU);
        }
        QVERIFY(Write(folder.filePath("damaged.mp4"), bytes));
        unread += PartOf(folder.filePath("damaged.mp4")) ? 0 : 1;
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
