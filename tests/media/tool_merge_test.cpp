// Merges requested like the recorder does, command by command, made by `tool` with the real ffmpeg.
#include "tests/support/tool_movies.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

class ToolMergeTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void whatFitsIsCopied_data();
    void whatFitsIsCopied();
    void whatDoesNotFitIsJoinedAllTheSame_data();
    void whatDoesNotFitIsJoinedAllTheSame();
    void twentyFilesEndInStep_data();
    void twentyFilesEndInStep();
    void firstMovieGivesSizeRateAndSound();
    void otherShapesAreCentredOnBlack();
    void partWithoutSoundIsSilent();
    void firstWithoutSoundTakesTheShapeOfTheNext();
    void partWithoutPictureIsBlack();
    void deletedPartsAreJoinedToTheEnd();
    void folderWithABarInItsName();
    void missingPartIsTold();
    void damagedPartIsTold();
    void emptyListFails();
    void quitStopsTheJoin();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    QString Path(const QString& name) const { return m_folder.filePath(name); }
    void Make(const QString& name, const QStringList& inputs, const QStringList& more);
    // The recorder's first stage. Returns the name of the intermediate.
    QString Convert(const QString& source, const QString& folder, int number);
    // Both stages. Returns the output of the second. The result is m_result.
    Outcome Merge(const QStringList& sources, const QString& folder = "parts");
    QStringList JoinArguments(const QStringList& parts);
    double Duration(const QString& path);
    void CheckWhole(const QStringList& sources);
    void CheckStep(double from);

    QTemporaryDir m_folder;
    QString m_result;
    int m_results = 0;
};

void ToolMergeTest::Make(const QString& name, const QStringList& inputs, const QStringList& more)
{
    const QByteArray problem = MakeMovie(inputs + more + QStringList(Path(name)));
    QVERIFY2(problem.isEmpty(), problem);
}

QString ToolMergeTest::Convert(const QString& source, const QString& folder, int number)
{
    QString part = Path(folder) + QString("/%1.ts").arg(number);
    QFile::remove(part);
    const Outcome outcome =
        RunProgram(TOOL_PROGRAM, {"-i", Path(source), "-vcodec", "copy", "-acodec", "copy", "-vbsf",
                                  "h264_mp4toannexb", part});
    if (outcome.code != 0) {
        qWarning("%s", qPrintable(QString::fromUtf8(outcome.error)));
    }
    return part;
}

QStringList ToolMergeTest::JoinArguments(const QStringList& parts)
{
    m_result = Path(QString("Merge_%1.mp4").arg(++m_results));
    return {"-i",      "concat:" + parts.join('|') + '|',
            "-acodec", "copy",
            "-vcodec", "copy",
            "-absf",   "aac_adtstoasc",
            m_result};
}

Outcome ToolMergeTest::Merge(const QStringList& sources, const QString& folder)
{
    QDir().mkpath(Path(folder));
    QStringList parts;
    for (const QString& source : sources) {
        parts << Convert(source, folder, static_cast<int>(parts.size()) + 1);
    }
    return RunProgram(TOOL_PROGRAM, JoinArguments(parts));
}

double ToolMergeTest::Duration(const QString& path)
{
    return DurationIn(RunProgram(TOOL_PROGRAM, {"-i", path}).error);
}

// The result is as long as all parts together, and every packet can be decoded.
void ToolMergeTest::CheckWhole(const QStringList& sources)
{
    double sum = 0;
    for (const QString& source : sources) {
        sum += Duration(Path(source));
    }
    const double duration = Duration(m_result);
    const QByteArray told = QByteArray::number(duration) + " s of " + QByteArray::number(sum);
    QVERIFY2(std::abs(duration - sum) < 0.2 * static_cast<double>(sources.size()), told);
    QCOMPARE(DecodingErrors(m_result), QByteArray());
}

// Each beep from then on coincides with a flash. In seconds.
void ToolMergeTest::CheckStep(double from)
{
    const QList<double> flashes = FlashTimes(m_result);
    int compared = 0;
    for (const double beep : BeepTimes(m_result)) {
        double nearest = 1000;
        for (const double flash : flashes) {
            nearest = std::abs(flash - beep) < std::abs(nearest) ? flash - beep : nearest;
        }
        if (beep >= from) {
            ++compared;
            QVERIFY2(std::abs(nearest) < 0.05, QByteArray::number(beep) +
                                                   " s: the flash is off by " +
                                                   QByteArray::number(nearest) + " s");
        }
    }
    QVERIFY2(compared > 0, "there is no beep at the end");
}

void ToolMergeTest::initTestCase()
{
    QVERIFY(m_folder.isValid());
    const QStringList plain = PlainCodecs();
    const QStringList stereo = plain + QStringList{"-ac", "2"};
    const QStringList both = FlashInput(2.5) + BeepInput(2.5);
    Make("plain.mp4", both, stereo);
    Make("longer.mp4", FlashInput(3.4) + BeepInput(3.4), stereo);
    Make("mute.mp4", FlashInput(2.5), plain);
    Make("b frames.mp4", both, stereo + QStringList{"-bf", "3"});
    Make("size.mp4", FlashInput(2.5, "320x180") + BeepInput(2.5), stereo);
    Make("tall.mp4", FlashInput(2.5, "90x160") + BeepInput(2.5), stereo);
    Make("odd pixels.mp4", both, stereo + QStringList{"-vf", "setsar=4/3"});
    Make("rate.mp4", FlashInput(2.5, "160x120", "60") + BeepInput(2.5), stereo);
    Make("ntsc.mp4", FlashInput(2.5, "160x120", "30000/1001") + BeepInput(2.5), stereo);
    Make("44100.mp4", FlashInput(2.5) + BeepInput(2.5, 44100), stereo);
    Make("mono.mp4", both, plain + QStringList{"-ac", "1"});
    Make("surround.mp4", both, plain + QStringList{"-ac", "6"});
    Make("colours.mp4", both, stereo + QStringList{"-pix_fmt", "yuv444p"});
    Make("h265.mp4", both,
         {"-c:v", "libx265", "-preset", "ultrafast", "-x265-params", "log-level=none", "-c:a",
          "aac", "-ac", "2"});
    Make("mpeg4.mp4", both, {"-c:v", "mpeg4", "-c:a", "libmp3lame"});
    Make("turned.mp4", {"-i", Path("plain.mp4")}, {"-c", "copy", "-metadata:s:v", "rotate=90"});
    Make("short sound.mp4", FlashInput(3) + BeepInput(1.2), stereo);
    Make("long sound.mp4", FlashInput(1.2) + BeepInput(3), stereo);
    Make("as recorded.mp4", FlashInput(2.5) + BeepInput(2.38), stereo);
    Make("late sound.mp4", FlashInput(3) + QStringList{"-itsoffset", "1"} + BeepInput(2), stereo);
    Make("uneven.mp4", both,
         stereo + QStringList{"-vf", "select='gt(random(0),0.2)'", "-fps_mode", "vfr"});
    Make("in pieces.mp4", both, stereo + QStringList{"-movflags", "frag_keyframe+empty_moov"});
    Make("sound alone.mp4", BeepInput(2), {"-c:a", "aac", "-ac", "2"});
    Make("cut.mp4", {"-ss", "1", "-i", Path("longer.mp4"), "-t", "2"}, {"-c", "copy"});
}

void ToolMergeTest::whatFitsIsCopied_data()
{
    QTest::addColumn<QStringList>("sources");
    const auto row = [](const QStringList& sources) {
        QTest::newRow(qPrintable(sources.join(", "))) << sources;
    };
    row({"plain.mp4"});
    row({"plain.mp4", "longer.mp4", "plain.mp4"});
    row({"mute.mp4", "mute.mp4"});
    row({"b frames.mp4", "b frames.mp4"});
    row({"surround.mp4", "surround.mp4"});
    row({"h265.mp4", "h265.mp4"});
    row({"plain.mp4", "in pieces.mp4"});
    row({"sound alone.mp4", "sound alone.mp4"});
}

void ToolMergeTest::whatFitsIsCopied()
{
    QFETCH(QStringList, sources);
    const Outcome outcome = Merge(sources);
    QVERIFY2(outcome.code == 0, outcome.error);
    const bool alone = sources.first().startsWith("mute") || sources.first().startsWith("sound");
    QCOMPARE(outcome.error.count("(copy)"), alone ? 1 : 2);
    CheckWhole(sources);
}

void ToolMergeTest::whatDoesNotFitIsJoinedAllTheSame_data()
{
    QTest::addColumn<QString>("other");
    for (const char* other : {"mute.mp4", "b frames.mp4", "size.mp4", "tall.mp4", "odd pixels.mp4",
                              "rate.mp4", "ntsc.mp4", "44100.mp4", "mono.mp4", "surround.mp4",
                              "colours.mp4", "h265.mp4", "mpeg4.mp4", "turned.mp4",
                              "short sound.mp4", "long sound.mp4", "cut.mp4", "sound alone.mp4"}) {
        QTest::newRow(other) << QString(other);
    }
}

void ToolMergeTest::whatDoesNotFitIsJoinedAllTheSame()
{
    QFETCH(QString, other);
    for (const QStringList& sources :
         {QStringList{"plain.mp4", other, "longer.mp4"}, QStringList{other, "longer.mp4"}}) {
        const Outcome outcome = Merge(sources);
        QVERIFY2(outcome.code == 0, outcome.error);
        QCOMPARE(outcome.error.count("(copy)"), 0);
        QVERIFY2(!outcome.error.contains("Invalid data") && !outcome.error.contains("No such file"),
                 outcome.error);
        QVERIFY2(outcome.error.contains("frame="), outcome.error);
        CheckWhole(sources);
        CheckStep(Duration(m_result) - 3.2);
    }
}

void ToolMergeTest::twentyFilesEndInStep_data()
{
    QTest::addColumn<QStringList>("some");
    QTest::newRow("copied") << QStringList{"plain.mp4", "longer.mp4"};
    QTest::newRow("copied, with b frames") << QStringList{"b frames.mp4"};
    QTest::newRow("copied, uneven") << QStringList{"uneven.mp4"};
    QTest::newRow("copied, sound ends early") << QStringList{"as recorded.mp4"};
    QTest::newRow("late sound") << QStringList{"late sound.mp4"};
    QTest::newRow("encoded") << QStringList{"ntsc.mp4", "plain.mp4", "44100.mp4", "mute.mp4",
                                            "b frames.mp4"};
}

void ToolMergeTest::twentyFilesEndInStep()
{
    QFETCH(QStringList, some);
    QStringList sources;
    for (int i = 0; i < 20; ++i) {
        sources << some[i % some.size()];
    }
    const Outcome outcome = Merge(sources);
    QVERIFY2(outcome.code == 0, outcome.error);
    CheckWhole(sources);
    CheckStep(Duration(m_result) - 6);
}

void ToolMergeTest::firstMovieGivesSizeRateAndSound()
{
    QVERIFY(Merge({"ntsc.mp4", "size.mp4", "surround.mp4", "44100.mp4"}).code == 0);
    QByteArray text = RunProgram("ffmpeg", {"-i", m_result}).error;
    QVERIFY2(text.contains("160x120 [SAR 1:1") && text.contains("29.97 fps"), text);
    QVERIFY2(text.contains("48000 Hz, stereo") && text.contains("yuv420p"), text);
    QVERIFY(Merge({"turned.mp4", "surround.mp4"}).code == 0);
    text = RunProgram("ffmpeg", {"-i", m_result}).error;
    QVERIFY2(text.contains("120x160") && text.contains("25 fps"), text);
    QVERIFY(Merge({"surround.mp4", "44100.mp4"}).code == 0);
    text = RunProgram("ffmpeg", {"-i", m_result}).error;
    QVERIFY2(text.contains("48000 Hz, 5.1"), text);
    QVERIFY(Merge({"44100.mp4", "surround.mp4"}).code == 0);
    text = RunProgram("ffmpeg", {"-i", m_result}).error;
    QVERIFY2(text.contains("44100 Hz, stereo"), text);
}

// A flash fills the picture of its movie. What stays dark is the border around it.
void ToolMergeTest::otherShapesAreCentredOnBlack()
{
    QVERIFY(Merge({"plain.mp4", "tall.mp4"}).code == 0);
    const auto brightness = [this](const QString& area) {
        const Outcome outcome =
            RunProgram("ffmpeg", {"-v", "error", "-nostdin", "-ss", "2.54", "-i", m_result,
                                  "-frames:v", "1", "-vf", "crop=" + area + ",scale=1:1:flags=area",
                                  "-pix_fmt", "gray", "-f", "rawvideo", "-"});
        return outcome.output.size() == 1 ? static_cast<unsigned char>(outcome.output[0]) : -1;
    };
    QVERIFY2(brightness("40:120:0:0") < 30, "the left is not black");
    QVERIFY2(brightness("40:120:120:0") < 30, "the right is not black");
    QVERIFY2(brightness("60:118:50:1") > 200, "the middle is not the movie");
}

void ToolMergeTest::partWithoutSoundIsSilent()
{
    QVERIFY(Merge({"plain.mp4", "mute.mp4", "plain.mp4"}).code == 0);
    QList<double> beeps = BeepTimes(m_result);
    QCOMPARE(beeps.size(), 6);
    QVERIFY2(beeps[2] < 2.1 && beeps[3] > 4.9, "there is a beep in the part without sound");
    CheckStep(0);
}

void ToolMergeTest::firstWithoutSoundTakesTheShapeOfTheNext()
{
    QVERIFY(Merge({"mute.mp4", "mono.mp4"}).code == 0);
    const QByteArray text = RunProgram("ffmpeg", {"-i", m_result}).error;
    QVERIFY2(text.contains("48000 Hz, mono"), text);
    QVERIFY2(BeepTimes(m_result).value(0) > 2, "the beeps are not those of the second movie");
    CheckStep(2);
}

void ToolMergeTest::partWithoutPictureIsBlack()
{
    QVERIFY(Merge({"plain.mp4", "sound alone.mp4", "plain.mp4"}).code == 0);
    QCOMPARE(BeepTimes(m_result).size(), 8);
    QCOMPARE(FlashTimes(m_result).size(), 6);
}

// The recorder waits half a minute, then deletes the parts, even if the join is still running.
void ToolMergeTest::deletedPartsAreJoinedToTheEnd()
{
    QDir().mkpath(Path("deleted"));
    QStringList parts;
    for (const char* source : {"longer.mp4", "size.mp4", "44100.mp4", "mute.mp4"}) {
        parts << Convert(source, "deleted", static_cast<int>(parts.size()) + 1);
    }
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(TOOL_PROGRAM, JoinArguments(parts));
    QByteArray text;
    while (!text.contains("Stream mapping:") && process.waitForReadyRead()) {
        text += process.readAll();
    }
    QVERIFY2(text.contains("Stream mapping:"), text);
    for (const QString& part : parts) {
        QVERIFY(QFile::remove(part));
    }
    QVERIFY(process.waitForFinished());
    QVERIFY2(process.exitCode() == 0, process.readAll());
    CheckWhole({"longer.mp4", "size.mp4", "44100.mp4", "mute.mp4"});
}

void ToolMergeTest::folderWithABarInItsName()
{
    for (const QStringList& sources :
         {QStringList{"plain.mp4", "plain.mp4"}, QStringList{"plain.mp4", "size.mp4"}}) {
        const Outcome outcome = Merge(sources, "a|b 'c' %1\n|d");
        QVERIFY2(outcome.code == 0, outcome.error);
        CheckWhole(sources);
    }
}

void ToolMergeTest::missingPartIsTold()
{
    QDir().mkpath(Path("parts"));
    const QString part = Convert("plain.mp4", "parts", 1);
    const Outcome outcome = RunProgram(TOOL_PROGRAM, JoinArguments({part, Path("parts/99.ts")}));
    QVERIFY(outcome.code != 0);
    QVERIFY2(outcome.error.contains("No such file"), outcome.error);
    QVERIFY(!QFile::exists(m_result));
}

void ToolMergeTest::damagedPartIsTold()
{
    QDir().mkpath(Path("parts"));
    const QString part = Convert("plain.mp4", "parts", 1);
    const QString damaged = Path("parts/8.ts");
    QVERIFY(WriteProgram(damaged, QByteArray(20000, 'x')));
    const Outcome outcome = RunProgram(TOOL_PROGRAM, JoinArguments({part, damaged}));
    QVERIFY(outcome.code != 0);
    QVERIFY2(outcome.error.contains("Invalid data"), outcome.error);
    QVERIFY(!QFile::exists(m_result));
}

void ToolMergeTest::emptyListFails()
{
    QStringList arguments = JoinArguments({});
    arguments[1] = "concat:";
    QVERIFY(RunProgram(TOOL_PROGRAM, arguments).code != 0);
}

void ToolMergeTest::quitStopsTheJoin()
{
    Make("long.mp4", PictureInput(600, "640x480", "10") + ToneInput(600), PlainCodecs());
    QDir().mkpath(Path("parts"));
    const QStringList parts = {Convert("long.mp4", "parts", 1), Convert("size.mp4", "parts", 2)};
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(TOOL_PROGRAM, JoinArguments(parts));
    QByteArray text;
    while (process.waitForReadyRead()) {
        text += process.readAll();
        process.write("q\r\n");
    }
    QVERIFY2(process.state() == QProcess::NotRunning || process.waitForFinished(), text);
    QVERIFY2(process.exitCode() != 0, text);
    QVERIFY2(!QFile::exists(m_result), "it went on to the end");
}

QTEST_GUILESS_MAIN(ToolMergeTest)
#include "tool_merge_test.moc"
