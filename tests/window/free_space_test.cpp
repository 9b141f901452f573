// The free space the window shows, and when it stops a recording for lack of space. The disk's
// answers are scripted.
#include "tests/window/fake_tool.h"
#include "tests/window/modal_boxes.h"

#include <QHash>
#include <QLineEdit>
#include <QProcess>
#include <QTimer>

#include <sys/statvfs.h>

namespace {
QHash<QByteArray, quint64> g_free; // free bytes by directory; others get the real value
QList<QByteArray> g_asked;
} // namespace

extern "C" {
int __real_statvfs(const char* path, struct statvfs* status); // NOLINT: the linker's names
int __wrap_statvfs(const char* path, struct statvfs* status); // NOLINT
int __wrap_statvfs(const char* path, struct statvfs* status)  // NOLINT
{
    g_asked << path;
    if (!g_free.contains(path)) {
        return __real_statvfs(path, status);
    }
    *status = {};
    status->f_frsize = 1;
    status->f_bavail = g_free.value(path);
    status->f_bfree = 2 * status->f_bavail; // what only root may use does not count
    status->f_bsize = 4096;
    return 0;
}
}

class FreeSpaceTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
    void init()
    {
        Prepare();
        g_free.clear();
        SetFree(SaveDirectory(), kEnough);
        m_boxes = std::make_unique<ModalBoxes>();
    }
    void cleanup()
    {
        m_boxes.reset();
        CloseWindow();
    }

    void thePageShowsTheSpaceOfTheSaveDirectory()
    {
        SetFree(SaveDirectory(), quint64{5} << 30U);
        OpenWindow();
        QCOMPARE(Shown(), QString("5.00 GB"));
    }

    void aChosenDirectoryShowsItsOwnSpace()
    {
        const QTemporaryDir chosen;
        SetFree(chosen.path(), 3 << 20);
        EnterRecordPage();
        QCOMPARE(Shown(), QString("10.00 MB"));
        m_boxes->directory = chosen.path();
        Call("btnSlotLayout2Dir");
        QCOMPARE(Shown(), QString("3.00 MB"));
    }

    void aCancelledChooserShowsTheSpaceThatWasRead()
    {
        EnterRecordPage();
        SetFree(SaveDirectory(), 3 << 20);
        Call("btnSlotLayout2Dir");
        QCOMPARE(m_boxes->choosers, 1);
        QCOMPARE(Shown(), QString("10.00 MB"));
    }

    // It was read when the page was created, and is not read again until another directory is
    // chosen.
    void aRecordingDoesNotRefreshTheSpaceShown()
    {
        EnterRecordPage();
        Press("Record");
        SetFree(SaveDirectory(), quint64{1} << 33U);
        Call("doTimerRec");
        Call("btnSlotRecord");
        Press("Back");
        Call("btnSlot");
        QCOMPARE(Shown(), QString("10.00 MB"));
    }

    void aRecordingStopsBelowTenMebibytes_data()
    {
        QTest::addColumn<quint64>("free");
        QTest::addColumn<bool>("stops");
        QTest::newRow("10 MiB") << kEnough << false;
        QTest::newRow("a byte less") << kEnough - 1 << true;
        QTest::newRow("nothing") << quint64{0} << true;
        QTest::newRow("a number of more than 32 bits") << (quint64{1} << 32U) << false;
    }

    void aRecordingStopsBelowTenMebibytes()
    {
        QFETCH(quint64, free);
        QFETCH(bool, stops);
        EnterRecordPage();
        Press("Record");
        Child<QTimer>("m_pRecTimer")->stop();
        QTRY_COMPARE(Recordings().size(), 1);
        SetFree(SaveDirectory(), free);
        Call("doTimerRec");
        QCOMPARE(DRUI::m_bIsStart, !stops);
        QCOMPARE(Window().isVisible(), stops);
        QCOMPARE(m_boxes->texts,
                 stops ? QStringList{"Not enough space, recording stopped."} : QStringList());
        QCOMPARE(DRUI::m_nRecorderRet, 0);
        if (stops) {
            QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);
            QCOMPARE(ReadFile(BesideProgram("finished")), QByteArray("finished"));
        }
    }

    // Only the timer does this.
    void aDiskThatFillsUpStopsTheRecording()
    {
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        QVERIFY(DRUI::m_bIsStart);
        SetFree(SaveDirectory(), 0);
        QTRY_COMPARE(m_boxes->texts, QStringList{"Not enough space, recording stopped."});
        QTRY_VERIFY(Window().isVisible());
        QVERIFY(!Child<QTimer>("m_pRecTimer")->isActive());
    }

    void theRecordingsDirectoryIsAskedForAtEveryTick()
    {
        const QTemporaryDir other;
        SetFree(other.path(), kEnough - 1);
        EnterRecordPage();
        Press("Record");
        Child<QTimer>("m_pRecTimer")->stop();
        for (int tick = 0; tick < 2; ++tick) {
            g_asked.clear();
            Call("doTimerRec");
            QCOMPARE(g_asked, QList<QByteArray>{SaveDirectory().toUtf8()});
        }
        Child<QLineEdit>("m_pSaveDirEdit")->setText(other.path());
        Call("doTimerRec");
        QVERIFY2(!DRUI::m_bIsStart, "the directory shown now was not asked for");
    }

private:
    static constexpr quint64 kEnough = 10485760;

    static void SetFree(const QString& directory, quint64 bytes)
    {
        g_free[directory.toUtf8()] = bytes;
    }

    QString Shown() { return Child<QLabel>("m_pFreeSpaceLabel")->text(); }

    std::unique_ptr<ModalBoxes> m_boxes;
};

QTEST_MAIN(FreeSpaceTest)
#include "free_space_test.moc"
