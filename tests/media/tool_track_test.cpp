// How the tracks of a movie are set up, as `tool` reads it from the headers, compared with ffprobe.
#include "tests/support/movie_test.h"
#include "tool/mp4/frugal_file.h"
#include "tool/mp4/movie.h"

#include <QCryptographicHash>

class ToolTrackTest : public MovieTest
{
    Q_OBJECT

private slots:
    void initTestCase();
    void tracksAreSetUpAsFfprobeSays_data();
    void tracksAreSetUpAsFfprobeSays();
    void equalMoviesAreSetUpAlike_data();
    void equalMoviesAreSetUpAlike();
    void oddDescriptionsAreNotTrusted_data();
    void oddDescriptionsAreNotTrusted();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    std::vector<tool::MovieTrack> Tracks(const QString& name) const;
};

std::vector<tool::MovieTrack> ToolTrackTest::Tracks(const QString& name) const
{
    tool::FrugalFile file(Path(name).toStdString(), tool::movieAllowance);
    const auto movie = tool::ReadMovie(file);
    return movie ? movie->tracks : std::vector<tool::MovieTrack>();
}

void ToolTrackTest::initTestCase()
{
    QVERIFY(m_folder.isValid());
    const QStringList both = PictureInput(1) + ToneInput(1);
    const QStringList plain = PlainCodecs();
    Make("plain.mp4", both + plain);
    Make("longer.mp4", PictureInput(2) + ToneInput(2) + plain);
    Make("rich sound.mp4", both + plain + QStringList{"-b:a", "300k"});
    Make("larger.mp4", PictureInput(1, "320x240") + ToneInput(1) + plain);
    Make("better.mp4", both + QStringList{"-c:v", "libx264", "-profile:v", "high", "-c:a", "aac"});
    Make("44100.mp4", PictureInput(1) + ToneInput(1, 44100) + plain);
    Make("stereo.mp4", both + plain + QStringList{"-ac", "2"});
    Make("wide pixels.mp4", both + plain + QStringList{"-vf", "setsar=2"});
    Make("h265.mp4", both + QStringList{"-c:v", "libx265", "-preset", "ultrafast", "-x265-params",
                                        "log-level=none", "-tag:v", "hvc1", "-c:a", "aac"});
    Make("mp3.mp4", both + QStringList{"-c:v", "mpeg4", "-c:a", "libmp3lame"});
    Make("fragmented.mp4", both + plain + QStringList{"-movflags", "frag_keyframe+empty_moov"});
}

void ToolTrackTest::tracksAreSetUpAsFfprobeSays_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("codecs");
    QTest::newRow("plain") << "plain.mp4"
                           << "avc1 aac ";
    QTest::newRow("44100") << "44100.mp4"
                           << "avc1 aac ";
    QTest::newRow("stereo") << "stereo.mp4"
                            << "avc1 aac ";
    QTest::newRow("wide pixels") << "wide pixels.mp4"
                                 << "avc1 aac ";
    QTest::newRow("h265") << "h265.mp4"
                          << "hvc1 aac ";
    QTest::newRow("mp3") << "mp3.mp4"
                         << "mp4v mp4a";
    QTest::newRow("fragmented") << "fragmented.mp4"
                                << "avc1 aac ";
}

void ToolTrackTest::tracksAreSetUpAsFfprobeSays()
{
    QFETCH(QString, name);
    const auto tracks = Tracks(name);
    QCOMPARE(tracks.size(), size_t{2});
    QTEST(QString::fromStdString(tracks[0].codec + ' ' + tracks[1].codec), "codecs");
    for (size_t i = 0; i < tracks.size(); ++i) {
        const tool::MovieTrack& track = tracks[i];
        const Outcome probe =
            RunProgram("ffprobe", {"-v", "error", "-show_data_hash", "md5", "-select_streams",
                                   QString::number(i), "-show_entries",
                                   "stream=id,time_base,duration_ts,extradata_hash", "-of",
                                   "csv=p=0", Path(name)});
        const QList<QByteArray> told = probe.output.trimmed().split(',');
        QVERIFY2(told.size() >= 3, probe.output + probe.error);
        QCOMPARE(QByteArray("0x") + QByteArray::number(track.id), told[0]);
        QCOMPARE("1/" + QByteArray::number(track.timescale), told[1]);
        const bool known = track.codec != "mp4v" && track.codec != "mp4a";
        QCOMPARE(!track.configuration.empty(), known);
        if (known) {
            const auto hash = QCryptographicHash::hash(
                QByteArray::fromStdString(track.configuration), QCryptographicHash::Md5);
            QCOMPARE("MD5:" + hash.toHex(), told.last());
        }
        if (name != "fragmented.mp4") {
            QCOMPARE(QByteArray::number(
                         static_cast<qulonglong>(track.mediaDuration - track.trimmedTicks)),
                     told[2]);
        }
    }
    const uint32_t width = name == "wide pixels.mp4" ? 320 : 160;
    QCOMPARE(tracks[0].width, width << 16U);
    QCOMPARE(tracks[0].height, 120U << 16U);
}

// What a join by copying asks for.
void ToolTrackTest::equalMoviesAreSetUpAlike_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("picture");
    QTest::addColumn<bool>("sound");
    QTest::newRow("longer") << "longer.mp4" << true << true;
    QTest::newRow("another bit rate") << "rich sound.mp4" << true << true;
    QTest::newRow("fragmented") << "fragmented.mp4" << true << true;
    QTest::newRow("another size") << "larger.mp4" << false << true;
    QTest::newRow("another profile") << "better.mp4" << false << true;
    QTest::newRow("another sample rate") << "44100.mp4" << true << false;
    QTest::newRow("more channels") << "stereo.mp4" << true << false;
}

void ToolTrackTest::equalMoviesAreSetUpAlike()
{
    QFETCH(QString, name);
    const auto plain = Tracks("plain.mp4");
    const auto other = Tracks(name);
    QCOMPARE(other.size(), plain.size());
    QTEST(other[0].configuration == plain[0].configuration, "picture");
    QTEST(other[1].configuration == plain[1].configuration, "sound");
}

void ToolTrackTest::oddDescriptionsAreNotTrusted_data()
{
    QTest::addColumn<QByteArray>("found"); // in the movie
    QTest::addColumn<int>("offset");       // from there
    QTest::addColumn<QByteArray>("bytes"); // written there
    QTest::addColumn<QString>("codecs");
    const QByteArray esds = "esds";
    const QByteArray endless = QByteArray::fromHex("ffffffffffffffff");
    QTest::newRow("two entries") << QByteArray("stsd") << 8 << QByteArray::fromHex("00000002")
                                 << " aac ";
    QTest::newRow("picture set up twice")
        << QByteArray("pasp") << 0 << QByteArray("avcC") << " aac ";
    QTest::newRow("another kind of stream") << esds << 8 << QByteArray(1, '\x09') << "avc1 mp4a";
    QTest::newRow("length without an end") << esds << 9 << endless << "avc1 mp4a";
    QTest::newRow("another codec") << esds << 21 << QByteArray(1, '\x6b') << "avc1 mp4a";
    QTest::newRow("decoder larger than its box")
        << esds << 35 << QByteArray::fromHex("ffffff7f") << "avc1 aac ";
    QTest::newRow("decoder without an end") << esds << 35 << endless << "avc1 aac ";
}

void ToolTrackTest::oddDescriptionsAreNotTrusted()
{
    QFETCH(QByteArray, found);
    QFETCH(int, offset);
    QFETCH(QByteArray, bytes);
    QByteArray movie = Bytes("plain.mp4");
    const qsizetype place = movie.indexOf(found);
    QVERIFY2(place > 0, "the movie has no such box");
    MakeFile("odd.mp4", movie.replace(place + offset, bytes.size(), bytes));
    const auto tracks = Tracks("odd.mp4");
    QCOMPARE(tracks.size(), size_t{2});
    QTEST(QString::fromStdString(tracks[0].codec + ' ' + tracks[1].codec), "codecs");
    QVERIFY2(tracks[0].configuration.empty() || tracks[1].configuration.empty(),
             "a configuration is made of it");
}

QTEST_GUILESS_MAIN(ToolTrackTest)
#include "tool_track_test.moc"
