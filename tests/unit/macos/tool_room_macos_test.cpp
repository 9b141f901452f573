// Whether a job finds room for its result on macOS, where the disk is made up.
#include "tool/edit/room.h"

#include <QTest>

#include <cerrno>
#include <sys/vfs.h>

namespace {

constexpr int kFolder = 5;
constexpr int kSilentFolder = 6; // on a file system that does not tell
constexpr uint64_t kTebibyte = 1ULL << 40U;

} // namespace

extern "C" {
int __wrap_fstatfs(int folder, struct statfs* status); // NOLINT: the linker's name
int __wrap_fstatfs(int folder, struct statfs* status)  // NOLINT
{
    *status = {};
    if (folder == kSilentFolder) {
        return 0;
    }
    if (folder != kFolder) {
        errno = EBADF;
        return -1;
    }
    status->f_bsize = 4096;
    status->f_blocks = 0x4'0000'0000;
    status->f_bavail = 0x1'4000'0000;
    return 0;
}
}

class ToolRoomMacosTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void diskAboveSixteenTebibytesHasItsRoom()
    {
        QCOMPARE(tool::LackOfRoom(kFolder, 19 * kTebibyte), std::string());
        const std::string lack = tool::LackOfRoom(kFolder, 21 * kTebibyte);
        QVERIFY2(lack.find("21990233 MB are free") != std::string::npos, lack.c_str());
    }

    void diskThatDoesNotTellRefusesNothing()
    {
        QCOMPARE(tool::LackOfRoom(kSilentFolder, kTebibyte), std::string());
        QCOMPARE(tool::LackOfRoom(-1, kTebibyte), std::string());
    }
};

QTEST_APPLESS_MAIN(ToolRoomMacosTest)
#include "tool_room_macos_test.moc"
