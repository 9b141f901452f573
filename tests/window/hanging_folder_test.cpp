// A folder that does not answer, such as one on a dead network share. Linked with a short wait.
#include "jobs/folder_listing.h"
#include "jobs/tool_runner.h"
#include "tests/window/job_in_program.h"

#include <condition_variable>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <mutex>
#include <sys/stat.h>

namespace {

std::mutex g_mutex;
std::condition_variable g_change;
QByteArray g_dead; // the path that does not answer
int g_waiting = 0; // calls that wait for it

void WaitForAnswer(const char* path)
{
    std::unique_lock lock(g_mutex);
    if (path != nullptr && g_dead == path) {
        ++g_waiting;
        g_change.wait(lock, [] { return g_dead.isEmpty(); });
        --g_waiting;
    }
}

template <class Function>
Function Real(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {
DIR* opendir(const char* path)
{
    WaitForAnswer(path);
    static const auto real = Real<DIR* (*)(const char*)>("opendir");
    return real(path);
}

int statx(int folder, const char* path, int flags, unsigned mask, struct statx* status)
{
    WaitForAnswer(path);
    static const auto real = Real<int (*)(int, const char*, int, unsigned, struct statx*)>("statx");
    return real(folder, path, flags, mask, status);
}
}

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
        SetDead(DeadPath());
        int events = 0;
        QTimer look;
        connect(&look, &QTimer::timeout, this, [&] {
            if (Waiting() > 0 && ++events == 20) {
                QTest::mouseClick(Window().windowHandle(), Qt::LeftButton, {}, Back());
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
        SetDead(DeadPath());
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
        SetDead(DeadPath());
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
        SetDead(DeadPath());
        QElapsedTimer sinceClose;
        When([] { return Waiting() > 0; },
             [&] {
                 sinceClose.start();
                 Window().close();
             });
        QCOMPARE(RunProgram([this] { Leave(Field()); }), 0);
        QVERIFY2(sinceClose.elapsed() < 1000, qPrintable(QString::number(sinceClose.elapsed())));
        QVERIFY2(IsListingLeftBehind(), "the program would wait for the folder");
        CloseWindow();
        SetDead(QString()); // the thread comes back to a window that is gone
        QTRY_COMPARE(Waiting(), 0);
        OpenWindow();
    }

private:
    static void SetDead(const QString& path)
    {
        const std::lock_guard lock(g_mutex);
        g_dead = QFile::encodeName(path);
        g_change.notify_all();
    }
    static int Waiting()
    {
        const std::lock_guard lock(g_mutex);
        return g_waiting;
    }

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
    QString DeadPath()
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

    // The middle of the button, in the window.
    QPoint Back()
    {
        for (auto* button : Window().findChildren<QPushButton*>()) {
            if (button->isVisible() && button->text() == "Back") {
                return button->mapTo(&Window(), button->rect().center());
            }
        }
        QTest::qFail("there is no Back", __FILE__, __LINE__);
        return {};
    }
};

QTEST_MAIN(HangingFolderTest)
#include "hanging_folder_test.moc"
