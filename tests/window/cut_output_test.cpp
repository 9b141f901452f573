#include "tests/window/job_tool.h"
#include "ui/scanui.h"

namespace {
constexpr auto kConversion = "m_pChangeTSProcess";
const QString kFailure = "Clip failed, not an valid format, it's better to clip created mp4 files";
} // namespace

// What a cut reads: for every chunk its own tool prints, the output of the process that converts
// for a merge. Here that process has output, which its own slot does not read.
class CutOutputTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        PrepareVideos();
        m_reports.clear();
        m_onReport = nullptr;
    }
    void cleanup()
    {
        if (auto* conversion = Child<QProcess>(kConversion)) {
            conversion->closeWriteChannel();
            conversion->waitForFinished();
        }
        FinishVideos();
    }

    void invalidDataOfTheConversionFailsTheCut()
    {
        CutWhileTheConversionSays({"x.mp4: Invalid data found when processing input"});
        QCOMPARE(m_reports, QStringList{"100 1"});
        QCOMPARE(Results(), QStringList());
        QCOMPARE(Boxes().texts, QStringList({Success(), kFailure}));
        QCOMPARE(SCANUI::m_nError, 1);
    }

    void theCutGoesOnAfterInvalidData()
    {
        CutWhileTheConversionSays({"Invalid data", "frame=1"});
        QCOMPARE(m_reports, QStringList({"5 0", "100 1"}));
        QCOMPARE(ReadFile(BesideProgram("finished")), QByteArray("x"));
        QCOMPARE(Results(), QStringList());
    }

    void everyChunkWithAFrameIsOneStepOfFivePerCent()
    {
        CutWhileTheConversionSays({"frame=1\nframe=2\nframe=3", "size=1", "frame=4"});
        QCOMPARE(m_reports, QStringList({"5 0", "10 0", "100 0"}));
        QCOMPARE(m_paths, QStringList(3, SaveDirectory() + "/a.mp4 > " + Target() + "/Cut_a.mp4"));
        QCOMPARE(Results(), QStringList{"Cut_a.mp4"});
        QCOMPARE(Boxes().texts, QStringList{Success()});
    }

    // A report of 100 ends the dialog, so each of them shows a message.
    void twentyStepsAreAllThatCount()
    {
        CutWhileTheConversionSays(QStringList(22, "frame=1"));
        QStringList expected;
        for (int step = 1; step <= 20; ++step) {
            expected << QString("%1 0").arg(5 * step);
        }
        QCOMPARE(m_reports, expected + QStringList(3, "100 0"));
        QCOMPARE(Boxes().texts, QStringList(4, Success()));
    }

    void aMarkSplitBetweenTwoChunksOrInOtherLettersIsNotSeen()
    {
        CutWhileTheConversionSays(
            {"fram", "e=1\n", "Invalid", " data\n", "Frame=1", "invalid data"});
        QCOMPARE(m_reports, QStringList{"100 0"});
        QCOMPARE(Results(), QStringList{"Cut_a.mp4"});
    }

    void whatFollowsAZeroByteIsNotSeen()
    {
        CutWhileTheConversionSays({QString("size=1") + QChar(0) + "frame=1 Invalid data"});
        QCOMPARE(m_reports, QStringList{"100 0"});
    }

    void theCutsOwnInvalidDataIsNotSeen()
    {
        CutWhileTheConversionSays({"size=1"}, "Invalid data frame=1");
        QCOMPARE(m_reports, QStringList{"100 0"});
        QCOMPARE(Results(), QStringList{"Cut_a.mp4"});
    }

    void theStepsOfASecondCutBeginAnew()
    {
        CutWhileTheConversionSays({"frame=1", "frame=2", "frame=3"});
        m_reports.clear();
        CutAgainWhileTheConversionSays({"frame=1"});
        QCOMPARE(m_reports, QStringList({"5 0", "100 0"}));
    }

    void aCutAfterOneOfInvalidDataKeepsItsFile()
    {
        CutWhileTheConversionSays({"Invalid data"});
        QCOMPARE(Results(), QStringList());
        m_reports.clear();
        CutAgainWhileTheConversionSays({"frame=1"});
        QCOMPARE(m_reports, QStringList({"5 0", "100 0"}));
        QCOMPARE(Results(), QStringList{"Cut_a.mp4"});
    }

    // Reading the folder at the last report, or while the message is open, finds no file of a
    // failed cut.
    void theFileOfAFailedCutIsGoneBeforeTheReport()
    {
        QStringList found{"never told"};
        m_onReport = [&] { found = Results(); };
        CutWhileTheConversionSays({"Invalid data"});
        QCOMPARE(m_reports, QStringList{"100 1"});
        QCOMPARE(found, QStringList());
    }

    void aCancelAsksTheConversionToQuitOnThatChunkAndEveryLaterOne()
    {
        SelectRange("a.mp4", 1, 2);
        const QString keys = Target() + "/keys";
        auto* conversion = Child<QProcess>(kConversion);
        conversion->start("/bin/sh", {"-c", "cat >\"$0\"", keys});
        QVERIFY(conversion->waitForStarted());
        int chunks = 0;
        Hear("m_pCutProcess", [&chunks] { DRUI::m_bisFinished = ++chunks >= 2; });
        SetJob("printf made >\"${!#}\"; for n in 1 2 3 4 5; do say frame=$n; done\n");
        Press("Cut");
        QCOMPARE(chunks, 5);
        conversion->closeWriteChannel();
        QVERIFY(conversion->waitForFinished());
        QCOMPARE(ReadFile(keys), QByteArray("q\r\nq\r\nq\r\n")); // chunks 3, 4 and 5
        QCOMPARE(Results(), QStringList{"keys"});
        QCOMPARE(Boxes().texts, QStringList({Success(), kFailure}));
        QCOMPARE(SCANUI::m_nError, 2);
    }

    // It then also counts its own ticks, without any.
    void theConversionMayPrintBeforeAnyMerge()
    {
        OpenWindow();
        QSignalSpy reports(&Window(), SIGNAL(AddProcessCallBack(int, QString, QString, int)));
        Child<QProcess>(kConversion)->start("/bin/echo", {"frame=1"});
        QVERIFY(Child<QProcess>(kConversion)->waitForFinished());
        QCOMPARE(reports.size(), 1);
        QCOMPARE(reports.first().first().toInt(), 0);
    }

public Q_SLOTS:
    // NOLINTNEXTLINE(performance-unnecessary-value-param): the signal's signature
    void Note(int percent, QString current, QString destination, int error)
    {
        m_reports << QString("%1 %2").arg(percent).arg(error);
        m_paths << current + " > " + destination;
        if (m_onReport) {
            m_onReport();
        }
    }

private:
    // Each text is available, alone, when the cut's tool prints its own.
    void CutWhileTheConversionSays(QStringList texts, const QByteArray& own = "frame=1")
    {
        SelectRange("a.mp4", 1, 2);
        m_paths.clear();
        QVERIFY(connect(&Window(), SIGNAL(CutProcessCallBack(int, QString, QString, int)), this,
                        SLOT(Note(int, QString, QString, int))));
        Hear("m_pCutProcess", [this] {
            if (m_next) {
                m_next();
            }
        });
        CutAgainWhileTheConversionSays(std::move(texts), own);
    }

    // In the window of the previous cut.
    void CutAgainWhileTheConversionSays(QStringList texts, const QByteArray& own = "frame=1")
    {
        auto* conversion = Child<QProcess>(kConversion);
        conversion->blockSignals(true);
        conversion->start("/bin/cat", QStringList());
        QVERIFY(conversion->waitForStarted());
        const qsizetype chunks = texts.size();
        m_next = [&] {
            if (!texts.isEmpty()) {
                conversion->write(texts.takeFirst().toLatin1());
                QVERIFY2(conversion->waitForReadyRead(), "the conversion prints nothing");
            }
        };
        m_next();
        QFile::remove(BesideProgram("finished"));
        SetJob("printf made >\"${!#}\"; for n in $(seq " + QByteArray::number(chunks) +
               "); do say '" + own + "'; done; printf x >\"$here/finished\"\n");
        Press("Cut");
        QVERIFY2(texts.isEmpty(), "the cut's tool was not heard");
        m_next = nullptr;
        conversion->closeWriteChannel();
        QVERIFY(conversion->waitForFinished());
        conversion->blockSignals(false);
    }

    QString Success() { return "Cut success, file path is " + Target() + "/Cut_a.mp4 "; }

    QStringList m_reports;
    QStringList m_paths;
    std::function<void()> m_next;     // after each chunk of the cut's tool
    std::function<void()> m_onReport; // before the dialog gets it
};

QTEST_MAIN(CutOutputTest)
#include "cut_output_test.moc"
