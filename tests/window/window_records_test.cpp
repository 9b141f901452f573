#include "tests/window/job_tool.h"

namespace {

// The records are private members of the window. An explicit instantiation may name private members
// and passes them out through its friend.
QVector<_FILE_INFO_>& ScanResults(DRUI& window);
QVector<_MERGER_FILE_INFO_>& MergeList(DRUI& window);

template <auto kMember>
struct ScanResultsOf
{
    friend QVector<_FILE_INFO_>& ScanResults(DRUI& window) { return window.*kMember; }
};

template <auto kMember>
struct MergeListOf
{
    friend QVector<_MERGER_FILE_INFO_>& MergeList(DRUI& window) { return window.*kMember; }
};

template struct ScanResultsOf<&DRUI::m_vecFileInfo>;
template struct MergeListOf<&DRUI::m_vecMergerFileInfo>;

} // namespace

// The records the window keeps: the last folder scan and the merge list.
class WindowRecordsTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        PrepareVideos();
        MakeVideo("new.mp4");
        MakeVideo("old.mp4");
        MakeVideo("elsewhere.mp4", "00:00:05", Target());
    }
    void cleanup() { FinishVideos(); }

    void everyScanReplacesTheResultsOfTheOneBefore()
    {
        OpenWindow();
        QCOMPARE(Scanned(), QStringList());
        Call("btnMontageSlot");
        QCOMPARE(Scanned(), QStringList({"new.mp4", "old.mp4"}));
        Call("btnSlotLayout3Dir");
        QCOMPARE(Scanned(), QStringList{"elsewhere.mp4"});
        Call("btnEditSlot");
        QCOMPARE(Scanned(), QStringList({"new.mp4", "old.mp4"}));
        Call("btnSlotLayout4Dir");
        QCOMPARE(Scanned(), QStringList{"elsewhere.mp4"});
        Child<QLineEdit>("m_pLayout3DirEdit")->setText(SaveDirectory());
        Leave("m_pLayout3DirEdit");
        QCOMPARE(Scanned(), QStringList({"new.mp4", "old.mp4"}));
    }

    void theMergeListIsKeptWhileThePagesAreBuiltAnew()
    {
        EnterMergePage();
        Add(1);
        Add(0);
        QVERIFY(MergeList(Window()).isEmpty());
        Call("btnMaxSlot");
        QStringList names;
        for (const _MERGER_FILE_INFO_& row : std::as_const(MergeList(Window()))) {
            names << QString::fromWCharArray(row.szFileName);
        }
        QCOMPARE(names, QStringList({"old.mp4", "new.mp4"}));
        QCOMPARE(QString::fromWCharArray(MergeList(Window()).first().szTime), QString("00:00:30"));
    }

private:
    QStringList Scanned()
    {
        QStringList names;
        for (const _FILE_INFO_& file : std::as_const(ScanResults(Window()))) {
            names << QString::fromWCharArray(file.szFileName);
        }
        return names;
    }
};

QTEST_MAIN(WindowRecordsTest)
#include "window_records_test.moc"
