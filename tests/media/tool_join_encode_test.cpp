// Joins of movies that do not fit together: they are encoded again.
#include "tests/support/tool_joins.h"

#include <QTest>

class ToolJoinEncodeTest : public QObject
{
    Q_OBJECT

private slots:
    void whatDoesNotFitIsJoinedAllTheSame_data();
    void whatDoesNotFitIsJoinedAllTheSame();
    void twentyDifferentFilesEndInStep();
    void firstMovieGivesSizeRateAndSound();
    void otherShapesAreCentredOnBlack();
    void partWithoutSoundIsSilent();
    void firstWithoutSoundTakesTheShapeOfTheNext();
    void partWithoutPictureIsBlack();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    JoinFolder m_folder;
};

void ToolJoinEncodeTest::whatDoesNotFitIsJoinedAllTheSame_data()
{
    QTest::addColumn<QString>("other");
    for (const char* other : {"mute.mp4", "b frames.mp4", "size.mp4", "tall.mp4", "odd pixels.mp4",
                              "rate.mp4", "ntsc.mp4", "44100.mp4", "mono.mp4", "surround.mp4",
                              "colours.mp4", "h265.mp4", "mpeg4.mp4", "turned.mp4",
                              "short sound.mp4", "long sound.mp4", "cut.mp4", "sound alone.mp4"}) {
        QTest::newRow(other) << QString(other);
    }
}

void ToolJoinEncodeTest::whatDoesNotFitIsJoinedAllTheSame()
{
    QFETCH(QString, other);
    for (const QStringList& sources :
         {QStringList{"plain.mp4", other, "longer.mp4"}, QStringList{other, "longer.mp4"}}) {
        const Outcome outcome = m_folder.Merge(sources);
        QVERIFY2(outcome.code == 0, outcome.error);
        QCOMPARE(outcome.error.count("(copy)"), 0);
        QVERIFY2(!outcome.error.contains("Invalid data") && !outcome.error.contains("No such file"),
                 outcome.error);
        QVERIFY2(outcome.error.contains("frame="), outcome.error);
        QCOMPARE(m_folder.FaultIn(sources), QByteArray());
        const double end = JoinFolder::Duration(m_folder.Result());
        QCOMPARE(m_folder.FaultInStep(end - 3.2), QByteArray());
    }
}

void ToolJoinEncodeTest::twentyDifferentFilesEndInStep()
{
    const QStringList some = {"ntsc.mp4", "plain.mp4", "44100.mp4", "mute.mp4", "b frames.mp4"};
    const QStringList sources = some + some + some + some;
    const Outcome outcome = m_folder.Merge(sources);
    QVERIFY2(outcome.code == 0, outcome.error);
    QCOMPARE(m_folder.FaultIn(sources), QByteArray());
    const double end = JoinFolder::Duration(m_folder.Result());
    QCOMPARE(m_folder.FaultInStep(end - 6), QByteArray());
}

void ToolJoinEncodeTest::firstMovieGivesSizeRateAndSound()
{
    const auto description = [this](const QStringList& sources) {
        return m_folder.Merge(sources).code == 0
                   ? RunProgram("ffmpeg", {"-i", m_folder.Result()}).error
                   : QByteArray("no result");
    };
    QByteArray text = description({"ntsc.mp4", "size.mp4", "surround.mp4", "44100.mp4"});
    QVERIFY2(text.contains("160x120 [SAR 1:1") && text.contains("29.97 fps"), text);
    QVERIFY2(text.contains("48000 Hz, stereo") && text.contains("yuv420p"), text);
    text = description({"turned.mp4", "surround.mp4"});
    QVERIFY2(text.contains("120x160") && text.contains("25 fps"), text);
    text = description({"surround.mp4", "44100.mp4"});
    QVERIFY2(text.contains("48000 Hz, 5.1"), text);
    text = description({"44100.mp4", "surround.mp4"});
    QVERIFY2(text.contains("44100 Hz, stereo"), text);
}

// A flash fills the picture of its movie. What stays dark is the border around it.
void ToolJoinEncodeTest::otherShapesAreCentredOnBlack()
{
    QVERIFY(m_folder.Merge({"plain.mp4", "tall.mp4"}).code == 0);
    const auto brightness = [this](const QString& area) {
        const Outcome outcome =
            RunProgram("ffmpeg", {"-v", "error", "-nostdin", "-ss", "2.54", "-i", m_folder.Result(),
                                  "-frames:v", "1", "-vf", "crop=" + area + ",scale=1:1:flags=area",
                                  "-pix_fmt", "gray", "-f", "rawvideo", "-"});
        return outcome.output.size() == 1 ? static_cast<unsigned char>(outcome.output[0]) : -1;
    };
    QVERIFY2(brightness("40:120:0:0") < 30, "the left is not black");
    QVERIFY2(brightness("40:120:120:0") < 30, "the right is not black");
    QVERIFY2(brightness("60:118:50:1") > 200, "the middle is not the movie");
}

void ToolJoinEncodeTest::partWithoutSoundIsSilent()
{
    QVERIFY(m_folder.Merge({"plain.mp4", "mute.mp4", "plain.mp4"}).code == 0);
    const QList<double> beeps = BeepTimes(m_folder.Result());
    QCOMPARE(beeps.size(), 6);
    QVERIFY2(beeps[2] < 2.1 && beeps[3] > 4.9, "there is a beep in the part without sound");
    QCOMPARE(m_folder.FaultInStep(0), QByteArray());
}

void ToolJoinEncodeTest::firstWithoutSoundTakesTheShapeOfTheNext()
{
    QVERIFY(m_folder.Merge({"mute.mp4", "mono.mp4"}).code == 0);
    const QByteArray text = RunProgram("ffmpeg", {"-i", m_folder.Result()}).error;
    QVERIFY2(text.contains("48000 Hz, mono"), text);
    QVERIFY2(BeepTimes(m_folder.Result()).value(0) > 2,
             "the beeps are not those of the second movie");
    QCOMPARE(m_folder.FaultInStep(2), QByteArray());
}

void ToolJoinEncodeTest::partWithoutPictureIsBlack()
{
    QVERIFY(m_folder.Merge({"plain.mp4", "sound alone.mp4", "plain.mp4"}).code == 0);
    QCOMPARE(BeepTimes(m_folder.Result()).size(), 8);
    QCOMPARE(FlashTimes(m_folder.Result()).size(), 6);
}

QTEST_GUILESS_MAIN(ToolJoinEncodeTest)
#include "tool_join_encode_test.moc"
