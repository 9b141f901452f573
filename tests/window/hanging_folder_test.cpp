// A folder that does not answer, such as one on a dead network share. Linked with a short wait.
#include "jobs/tool_runner.h"
#include "jobs/work_thread.h"
#include "tests/window/dead_path.h"
#include "tests/window/job_in_program.h"

class HangingFolderTest : public JobInProgramTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        PrepareJobs();
        MakeVideo("a.mp4");
        MakeVideo("b.mp4");
    }
    void cleanup()
    {
        SetDead(QString());
        QTRY_COMPARE(Waiting(), 0);
        FinishJobs();
    }

    void backLeavesThePage_data() { Kinds(); }
    void backLeavesThePage()
    {
        OpenOnPage();
        SetDead(Dead());
        int events = 0;
        QTimer look;
        connect(&look, &QTimer::timeout, this, [&] {
            if (Waiting() > 0 && ++events == 20) {
                QTest::mouseClick(Window().windowHandle(), Qt::LeftButton, {}, MiddleOf("Back"));
            }
        });
        look.start(5);
        Leave(Field());
        QVERIFY2(events >= 20, "the window did not live while the folder was read");
        QCOMPARE(Page(), 0);
        SetDead(QString()); // what is read now comes too late
        QTRY_COMPARE(Waiting(), 0);
        QCoreApplication::processEvents();
        QCOMPARE(Table()->rowCount(), 0);
        ShowPage();
        QCOMPARE(Table()->rowCount(), 2);
    }

    void aFolderThatAnswersLateIsListedWhole_data() { Kinds(); }
    void aFolderThatAnswersLateIsListedWhole()
    {
        OpenOnPage();
        SetDead(Dead());
        When([] { return Waiting() > 0; }, [] { SetDead(QString()); });
        Leave(Field());
        QCOMPARE(Table()->rowCount(), 2);
    }

    void aFolderThatNeverAnswersIsShownEmpty_data()
    {
        QTest::addColumn<bool>("merge");
        QTest::addColumn<QString>("dead");
        QTest::newRow("cut page, a file") << false << "/b.mp4";
        QTest::newRow("merge page, the folder") << true << QString();
    }
    void aFolderThatNeverAnswersIsShownEmpty()
    {
        OpenWindow();
        SetDead(Dead());
        ShowPage();
        QCOMPARE(Page(), IsMerge() ? 3 : 2);
        QCOMPARE(Table()->rowCount(), 0);
    }

    void theFolderButtonDoesNotFreezeTheWindow_data() { Kinds(); }
    void theFolderButtonDoesNotFreezeTheWindow()
    {
        MakeVideo("b.mp4", "00:00:30", Target());
        OpenOnPage();
        QFETCH(QString, dead);
        connect(Child<QLineEdit>(Field()), &QLineEdit::textChanged, this,
                [this, dead] { SetDead(Target() + dead); }); // the chooser could read it
        When([] { return Waiting() > 0; }, [this] { Call("btnSlotBack"); });
        Call(IsMerge() ? "btnSlotLayout4Dir" : "btnSlotLayout3Dir");
        QCOMPARE(Page(), 0);
    }

    void closingTheWindowEndsTheScan_data() { Kinds(); }
    void closingTheWindowEndsTheScan()
    {
        OpenOnPage();
        SetDead(Dead());
        QElapsedTimer sinceClose;
        When([] { return Waiting() > 0; },
             [&] {
                 sinceClose.start();
                 Window().close();
             });
        QCOMPARE(RunProgram([this] { Leave(Field()); }), 0);
        QVERIFY2(sinceClose.elapsed() < 1000, qPrintable(QString::number(sinceClose.elapsed())));
        QVERIFY2(IsThreadLeftBehind(), "the program would wait for the folder");
        CloseWindow();
        SetDead(QString()); // the thread comes back to a window that is gone
        QTRY_COMPARE(Waiting(), 0);
        OpenWindow();
    }

private:
    static void SetDead(const QString& path) { DeadPath::Set(path); }
    static int Waiting() { return DeadPath::Waiting(); }

    static void Kinds()
    {
        QTest::addColumn<bool>("merge");
        QTest::addColumn<QString>("dead");
        QTest::newRow("cut page, the folder") << false << QString();
        QTest::newRow("cut page, a file") << false << "/b.mp4";
        QTest::newRow("merge page, the folder") << true << QString();
        QTest::newRow("merge page, a file") << true << "/b.mp4";
    }
    static bool IsMerge()
    {
        QFETCH(bool, merge);
        return merge;
    }
    QString Dead()
    {
        QFETCH(QString, dead);
        return SaveDirectory() + dead;
    }
    static const char* Field() { return IsMerge() ? "m_pLayout4DirEdit" : "m_pLayout3DirEdit"; }
    QTableWidget* Table()
    {
        return Child<QTableWidget>(IsMerge() ? "m_pSourceVideoTable" : "m_pCutVideoTable");
    }
    void OpenOnPage()
    {
        OpenWindow();
        ShowPage();
    }
    void ShowPage() { Call(IsMerge() ? "btnEditSlot" : "btnMontageSlot"); }
};

QTEST_MAIN(HangingFolderTest)
#include "hanging_folder_test.moc"
