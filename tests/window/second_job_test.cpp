#include "tests/window/job_tool.h"

#include <QThread>

#ifndef Q_OS_MACOS
namespace {
int g_threadsStarted = 0;
}

// NOLINTBEGIN: the linker's names of QThread::start()
extern "C" {
void __real__ZN7QThread5startENS_8PriorityE(QThread* thread, QThread::Priority priority);
void __wrap__ZN7QThread5startENS_8PriorityE(QThread* thread, QThread::Priority priority);
void __wrap__ZN7QThread5startENS_8PriorityE(QThread* thread, QThread::Priority priority)
{
    ++g_threadsStarted;
    __real__ZN7QThread5startENS_8PriorityE(thread, priority);
}
}
// NOLINTEND
#endif

// A cut and a merge in a window that has run other jobs before. Nothing of those may remain: files,
// progress, result, cancel request.
class SecondJobTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        PrepareVideos();
        m_percents.clear();
        m_error = -1;
        m_cancel = false;
    }
    void cleanup() { FinishVideos(); }

    void aMergeAfterAnyOtherJobIsAsGoodAsTheFirst_data() { JobsBefore(); }
    void aMergeAfterAnyOtherJobIsAsGoodAsTheFirst()
    {
        MakeList({"a.mp4", "b.mp4"});
        Listen("AddProcessCallBack");
        RunJobBefore();

        SetJob(kTwoTicks);
        Press("Merge");
        QCOMPARE(Calls().size(), 3);
        QCOMPARE(m_percents, QList<int>({1, 3, 5, 6, 8, 10, 100}));
        QCOMPARE(m_error, 0);
        QCOMPARE(Results().size(), 1);
        QCOMPARE(ReadFile(Target() + '/' + Results().value(0)), QByteArray("made"));
        QVERIFY2(!QFile::exists(BesideProgram("asked")), "the tool was asked to quit");
        QCOMPARE(Boxes().texts, QStringList{"Merge success, file path is " + Target() + '/' +
                                            Results().value(0) + ' '});
    }

    void aCutAfterAnyOtherJobIsAsGoodAsTheFirst_data() { JobsBefore(); }
    void aCutAfterAnyOtherJobIsAsGoodAsTheFirst()
    {
        MakeList({"a.mp4", "b.mp4"});
        SelectInCutPage(0, 3, 8);
        Listen("CutProcessCallBack");
        RunJobBefore();

        SCANUI::m_nError = kJobGood; // a cut reports nothing that clears it before it ends
        SetJob(kTwoTicks);
        Call("btnSlotLayout3Cut");
        QCOMPARE(Calls().size(), 1);
        QCOMPARE(m_percents, QList<int>{100});
        QCOMPARE(m_error, 0);
        QCOMPARE(Results(), QStringList{"Cut_a.mp4"});
        QCOMPARE(ReadFile(Target() + "/Cut_a.mp4"), QByteArray("made"));
        QCOMPARE(Boxes().texts,
                 QStringList{"Cut success, file path is " + Target() + "/Cut_a.mp4 "});
    }

    // Each counts less than in the first merge, because there are more of them.
    void aLongerListCountsItsOwnTicks()
    {
        MakeList({"a.mp4", "b.mp4"});
        Listen("AddProcessCallBack");
        SetJob(kTwoTicks);
        Press("Merge");
        Add(0);
        m_percents.clear();
        Press("Merge");
        QCOMPARE(m_percents, QList<int>({1, 2, 3, 5, 6, 7, 8, 10, 100})); // out of 80
    }

    void aMergeTakesTheListAsItIsNow()
    {
        MakeList({"a.mp4", "b.mp4", "c.mp4"});
        Press("Merge");
        Calls();
        ClickRow("m_pTargetVideoTable", 0);
        Press("Delete");
        Press("Merge");
        QStringList calls = Calls();
        QCOMPARE(calls.size(), 3);
        QVERIFY2(calls.at(0).startsWith("<-i><" + SaveDirectory() + "/b.mp4>"),
                 qPrintable(calls.at(0)));
        QVERIFY2(calls.at(1).startsWith("<-i><" + SaveDirectory() + "/c.mp4>"),
                 qPrintable(calls.at(1)));
        QVERIFY2(
            calls.at(2).startsWith("<-i><concat:" + Target() + "/1.ts|" + Target() + "/2.ts|>"),
            qPrintable(calls.at(2)));

        ClickRow("m_pTargetVideoTable", 1);
        Press("Up");
        Press("Merge");
        calls = Calls();
        QCOMPARE(calls.size(), 3);
        QVERIFY2(calls.at(0).startsWith("<-i><" + SaveDirectory() + "/c.mp4>"),
                 qPrintable(calls.at(0)));
    }

    void aMergeGoesIntoTheFolderChosenNow()
    {
        const QTemporaryDir other;
        MakeList({"a.mp4", "b.mp4"});
        Press("Merge");
        Calls();
        Boxes().directory = other.path();
        Press("Merge");
        QCOMPARE(Boxes().startDirectory, Target());
        for (const QString& call : Calls()) {
            QVERIFY2(!call.contains(Target()), qPrintable(call));
        }
        QCOMPARE(QDir(other.path()).entryList(QDir::Files).size(), 1);
        QCOMPARE(Results().size(), 1); // of the first one
    }

    void aCutTakesTheVideoTheMarksAndTheFolderOfNow()
    {
        const QTemporaryDir other;
        MakeVideo("a.mp4");
        MakeVideo("b.mp4");
        EnterCutPage();
        SelectInCutPage(0, 10, 25);
        Press("Cut");
        SelectInCutPage(1, 3, 8);
        Boxes().directory = other.path();
        Press("Cut");
        QCOMPARE(Calls(),
                 QStringList{"<-i><" + SaveDirectory() + "/b.mp4><-ss><3><-t><5><-codec><copy><" +
                             other.path() + "/Cut_b.mp4>"});
        QCOMPARE(Results(), QStringList{"Cut_a.mp4"});
        QCOMPARE(QDir(other.path()).entryList(QDir::Files), QStringList{"Cut_b.mp4"});
        QCOMPARE(Boxes().texts.last(), "Cut success, file path is " + other.path() + "/Cut_b.mp4 ");
    }

    // Jobs run on the window's thread, although the window has a job thread.
    void noJobStartsAThread()
    {
#ifndef Q_OS_MACOS
        MakeList({"a.mp4", "b.mp4"});
        SelectInCutPage(0, 3, 8);
        g_threadsStarted = 0;
        Call("btnSlotLayout4Merge");
        Call("btnSlotLayout3Cut");
        QCOMPARE(Results().size(), 2);
        QCOMPARE(g_threadsStarted, 0);
#else
        QSKIP("QThread::start() is wrapped by the linker, which macOS's cannot do");
#endif
    }

    // At its end a cut shows the error of the previous job, in its own wording.
    void theErrorOfACancelledMergeIsToldByTheNextCut()
    {
        MakeList({"a.mp4", "b.mp4"});
        SelectInCutPage(0, 3, 8);
        Listen("AddProcessCallBack");
        m_cancel = true;
        SetJob(kTwoTicks);
        Call("btnSlotLayout4Merge");
        m_cancel = false;
        QCOMPARE(SCANUI::m_nError, 2);
        Boxes().texts.clear();
        Call("btnSlotLayout3Cut");
        QCOMPARE(Boxes().texts, QStringList{"Clip failed, not an valid format, it's better to clip "
                                            "created mp4 files"});
        QCOMPARE(SCANUI::m_nError, 0);
        Call("btnSlotLayout3Cut");
        QVERIFY2(Boxes().texts.last().startsWith("Cut success"), qPrintable(Boxes().texts.last()));
    }

public Q_SLOTS:
    // NOLINTNEXTLINE(performance-unnecessary-value-param): the signal's signature
    void Note(int percent, QString /*current*/, QString /*destination*/, int error)
    {
        m_percents << percent;
        m_error = error;
    }

private:
    // Records the request to quit, if any.
    static constexpr auto kTwoTicks = "say frame=1; say frame=2; printf made >\"${!#}\"\n"
                                      "read -r -t 0 && printf x >>\"$here/asked\"\n";

    static void JobsBefore()
    {
        QTest::addColumn<QByteArray>("slot");
        QTest::addColumn<QByteArray>("says");
        QTest::addColumn<bool>("cancel");
        const QByteArray merge = "btnSlotLayout4Merge";
        const QByteArray inJoin = "[[ $2 == concat:* ]] || exit 0; ";
        QTest::newRow("a good merge") << merge << QByteArray() << false;
        QTest::newRow("a merge of invalid data")
            << merge << QByteArray("say Invalid data;") << false;
        QTest::newRow("a merge that missed a stream")
            << merge << inJoin + "say No such file;" << false;
        QTest::newRow("a merge cancelled in a conversion") << merge << QByteArray() << true;
        QTest::newRow("a merge cancelled in the join") << merge << inJoin << true;
        QTest::newRow("a good cut") << QByteArray("btnSlotLayout3Cut") << QByteArray() << false;
        QTest::newRow("a cancelled cut") << QByteArray("btnSlotLayout3Cut") << QByteArray() << true;
    }

    // In this window, after removing everything left on disk and in the message boxes.
    void RunJobBefore()
    {
        QFETCH(QByteArray, slot);
        QFETCH(QByteArray, says);
        QFETCH(bool, cancel);
        SetJob(says + "say frame=1; say frame=2; say frame=3; printf made >\"${!#}\"\n");
        m_cancel = cancel;
        Call(slot.constData());
        m_cancel = false;
        QVERIFY2(cancel == DRUI::m_bisFinished, "the job before was not cancelled");
        for (const QString& file : Results()) {
            QFile::remove(Target() + '/' + file);
        }
        QFile::remove(BesideProgram("asked"));
        Calls();
        Boxes().texts.clear();
        m_percents.clear();
        m_error = -1;
    }

    // Every chunk is read. With m_cancel set, the user confirms at the first one.
    void Listen(const QByteArray& reports)
    {
        Calls();
        for (const char* process : {"m_pChangeTSProcess", "m_pMergeProcess", "m_pCutProcess"}) {
            Hear(process, [this] { DRUI::m_bisFinished = DRUI::m_bisFinished || m_cancel; });
        }
        const QByteArray signal = "2" + reports + "(int,QString,QString,int)"; // like SIGNAL()
        QVERIFY(
            connect(&Window(), signal.constData(), this, SLOT(Note(int, QString, QString, int))));
    }

    // Shows the cut page, if only to choose.
    void SelectInCutPage(int row, int start, int end)
    {
        const int page = Page();
        Call("btnMontageSlot");
        ClickRow("m_pCutVideoTable", row);
        SetMarks(start, end);
        if (page == 3) {
            Call("btnEditSlot");
        }
        Calls();
    }

    QList<int> m_percents;
    int m_error = -1;
    bool m_cancel = false;
};

QTEST_MAIN(SecondJobTest)
#include "second_job_test.moc"
