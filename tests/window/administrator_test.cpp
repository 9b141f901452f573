#include "tests/window/job_tool.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr uid_t kUser = 65534;

uid_t OwnerOf(const QString& path)
{
    struct stat status = {};
    return lstat(qPrintable(path), &status) == 0 ? status.st_uid : static_cast<uid_t>(-1);
}

} // namespace

// The program, run as root for a user, leaves nothing owned by root.
class AdministratorTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        if (geteuid() != 0) {
            QSKIP("needs root");
        }
        PrepareVideos();
        QCOMPARE(chown(qPrintable(Target()), kUser, kUser), 0);
    }

    void cleanup() { FinishVideos(); }

    void aRecordingAndItsFolderBelongToTheUser()
    {
        InstallTool(kRecordingTool);
        QCOMPARE(chown(qPrintable(SaveDirectory()), kUser, kUser), 0);
        const QString folder = SaveDirectory() + "/ScreenSave";
        WriteFile(BesideProgram("ScreenRecord.ini"),
                  "[screen_record]\nsave_path=" + folder.toUtf8() + '\n');
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(QDir(folder).entryList({"*.mp4"}, QDir::Files).size(), 1);
        const QString file = folder + '/' + QDir(folder).entryList(QDir::Files).constFirst();
        QTRY_COMPARE(OwnerOf(file), kUser);
        QCOMPARE(OwnerOf(folder), kUser);
        Call("btnSlotMenuStop");
    }

    void aCutBelongsToTheUser()
    {
        SelectRange("a.mp4", 1, 3);
        Press("Cut");
        QCOMPARE(OwnerOf(Target() + "/Cut_a.mp4"), kUser);
    }

    void aMergeBelongsToTheUser()
    {
        MakeList({"a.mp4", "b.mp4"});
        Press("Merge");
        QCOMPARE(Results().size(), 1);
        QCOMPARE(OwnerOf(Target() + '/' + Results().constFirst()), kUser);
    }
};

QTEST_MAIN(AdministratorTest)
#include "administrator_test.moc"
