// Recordings whose disk is full or loses power. As in tool_cut_short_test, the screen shows a
// counter.
#include "tests/support/cut_short.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <csignal>
#include <sys/mount.h>
#include <sys/resource.h>
#include <unistd.h>

class ToolDiskEndTest : public CutShortTest
{
    Q_OBJECT

private slots:
    void initTestCase();
    void powerCutLosesTwoSeconds();
    void fullDiskLeavesWhatHadRoom();
    void volumeFilledByAnotherProgramLeavesWhatHadRoom();
};

void ToolDiskEndTest::initTestCase()
{
    Prepare();
}

// What is known to be on the disk, and nothing else, at every moment of the recording.
void ToolDiskEndTest::powerCutLosesTwoSeconds()
{
    const QString log = Path("synced");
    Take take(Path("power.mp4"), "0:1",
              {"LD_PRELOAD=" FDATASYNC_PRELOAD, "LUMENFOLD_SYNC_LOG=" + log});
    RecordFor(take, 0);
    const auto synced = [&] {
        QFile file(log);
        return file.open(QIODevice::ReadOnly) ? file.readAll().split('\n') : QList<QByteArray>();
    };
    // Just before the next fragment reaches the disk, when the loss is greatest.
    for (const qsizetype syncs : {3, 5, 7}) {
        QTRY_VERIFY2_WITH_TIMEOUT(synced().size() > syncs, "the disk has nothing new", 20000);
        const Moment moment = Now(take);
        const QList<QByteArray> sizes = synced(); // the last line is empty
        QFile whole(take.Path());
        QVERIFY(whole.open(QIODevice::ReadOnly));
        const QString left = Path(QString("power %1.mp4").arg(syncs));
        QFile part(left);
        QVERIFY(part.open(QIODevice::WriteOnly));
        part.write(whole.read(sizes.at(sizes.size() - 3).toLongLong()));
        part.close();
        ExpectUpTo(left, moment, true);
        if (QTest::currentTestFailed()) {
            return;
        }
    }
}

// A file that cannot grow, even for root.
void ToolDiskEndTest::fullDiskLeavesWhatHadRoom()
{
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{25000, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    Take take(Path("full.mp4"), "0:1");
    QTRY_VERIFY2_WITH_TIMEOUT(take.HasPicture(), take.Text(), 20000);
    setrlimit(RLIMIT_FSIZE, &before);
    QTRY_VERIFY2_WITH_TIMEOUT(take.HasEnded(), "it records on without room", 40000);
    const Moment moment = Now(take);
    QVERIFY2(take.Text().contains("File too large"), take.Text());
    QVERIFY(take.ExitCode() != 0);
    // The incomplete fragment is removed.
    QTRY_VERIFY(QFileInfo(take.Path()).size() < 25000);
    ExpectUpTo(take.Path(), moment, true);
    QCOMPARE(DecodingErrors(take.Path()), QByteArray());
}

void ToolDiskEndTest::volumeFilledByAnotherProgramLeavesWhatHadRoom()
{
    const QString volume = Path("volume");
    QVERIFY(QDir().mkdir(volume));
    if (mount("none", QFile::encodeName(volume), "tmpfs", 0, "size=8m") != 0) {
        QSKIP("only root can make a volume for this");
    }
    const auto unmount = qScopeGuard([&] { umount2(QFile::encodeName(volume), MNT_DETACH); });
    Take take(volume + "/r.mp4", "0:1");
    RecordFor(take, 2200);
    const Moment moment = Now(take);
    QFile other(volume + "/other");
    QVERIFY(other.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (other.write(QByteArray(4096, 'x')) == 4096) {
    }
    QVERIFY2(take.WaitForEnd(), "it records on without room");
    const auto isSettled = [&] {
        return RunProgram("ffmpeg", {"-v", "error", "-i", take.Path(), "-f", "null", "-"})
            .error.isEmpty();
    };
    QTRY_VERIFY2(isSettled(), "it does not play to its end");
    ExpectUpTo(take.Path(), moment, true);
}

QTEST_GUILESS_MAIN(ToolDiskEndTest)
#include "tool_disk_end_test.moc"
