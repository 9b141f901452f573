#include "tests/window/failure_box.h"
#include "tests/window/job_tool.h"

namespace {

constexpr auto kNoName = "no free name is left for the file, choose another directory";

// A folder below `base` with a path of `length` characters.
QString DeepFolder(QString base, qsizetype length)
{
    while (base.size() < length) {
        base += '/' + QString(qMin(length - base.size() - 1, qsizetype{200}), 'd');
    }
    return QDir().mkpath(base) ? base : QString();
}

// Takes all names a file may get from the current time during the test.
void TakeNames(const QString& folder, const QString& format)
{
    const QDateTime now = QDateTime::currentDateTime();
    for (int second = 0; second < 60; ++second) {
        WriteFile(folder + '/' + now.addSecs(second).toString(format), "mine");
    }
}

} // namespace

// A name is taken and has no room for a number. The command line would lose its last argument, so
// the job does not start and says why.
class NoFreeNameTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { PrepareVideos(); }
    void cleanup() { FinishVideos(); }

    void aCutFails()
    {
        const QString name = QString(247, 'n') + ".mp4"; // 255 bytes with "Cut_"
        WriteFile(Target() + "/Cut_" + name, "mine");
        SelectRange(name, 1, 3);
        Press("Cut");
        QCOMPARE(Boxes().texts, QStringList{QString("Clip failed, ") + kNoName});
        QCOMPARE(Calls(), QStringList());
        QCOMPARE(Results(), QStringList{"Cut_" + name});
        QCOMPARE(ReadFile(Target() + "/Cut_" + name), QByteArray("mine"));
    }

    void theNextCutIntoAnotherFolderSucceeds()
    {
        const QString name = QString(247, 'n') + ".mp4";
        WriteFile(Target() + "/Cut_" + name, "mine");
        SelectRange(name, 1, 3);
        Press("Cut");
        const QTemporaryDir other;
        Boxes().directory = other.path();
        Press("Cut");
        QCOMPARE(Boxes().texts.last(),
                 QString("Cut success, file path is %1/Cut_%2 ").arg(other.path(), name));
    }

    void aMergeFails()
    {
        MakeList({"a.mp4", "b.mp4"});
        Calls();
        const QString folder = DeepFolder(Target(), 500);
        TakeNames(folder, "'Merge_'yyyy-MM-dd hh-mm-ss'.mp4'");
        Boxes().directory = folder;
        Press("Merge");
        QCOMPARE(Boxes().texts, QStringList{QString("Merge failed, ") + kNoName});
        QCOMPARE(Calls(), QStringList());
        QCOMPARE(QDir(folder).entryList(QDir::Files).size(), 60);
    }

    void aMergeWhoseStreamHasNoNameFailsAndLeavesNothing()
    {
        MakeList({"a.mp4", "b.mp4"});
        Calls();
        const QString folder = DeepFolder(Target(), 512);
        QVERIFY(QDir(folder).mkdir("2.ts")); // a directory cannot be removed like a file
        Boxes().directory = folder;
        Press("Merge");
        QCOMPARE(Boxes().texts, QStringList{QString("Merge failed, ") + kNoName});
        QCOMPARE(Calls().size(), 1);
        QCOMPARE(QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList{"2.ts"});
    }

    void aRecordingSaysSoAtOnce()
    {
        const QString folder = DeepFolder(Target(), 500);
        TakeNames(folder, "yyyy-MM-dd hh-mm-ss'.mp4'");
        WriteFile(BesideProgram("ScreenRecord.ini"),
                  "[screen_record]\nsave_path=" + folder.toUtf8() + '\n');
        EnterCutPage();
        Calls();
        Call("btnSlotRecord");
        QVERIFY(DRUI::m_bIsStart);
        QCOMPARE(ToldFailure(), QString("The recording could not be started: ") + kNoName);
        Call("btnSlotRecord");
        QCOMPARE(Boxes().texts, QStringList());
        QCOMPARE(Calls(), QStringList());
        QVERIFY(Window().isVisible());
    }
};

QTEST_MAIN(NoFreeNameTest)
#include "no_free_name_test.moc"
