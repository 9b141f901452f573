#include "util/disk.h"
#include "util/wide_text.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <sys/statvfs.h>
#include <unistd.h>

#ifdef WRAPS_SYSTEM_CALLS
namespace {
bool g_diskFails = false;
struct statvfs* g_disk = nullptr; // replaces the answer of the disk
} // namespace

extern "C" {
int __real_statvfs(const char* path, struct statvfs* status); // NOLINT: the linker's names
int __wrap_statvfs(const char* path, struct statvfs* status); // NOLINT
int __wrap_statvfs(const char* path, struct statvfs* status)  // NOLINT
{
    if (g_disk != nullptr) {
        *status = *g_disk;
        return 0;
    }
    return g_diskFails ? -1 : __real_statvfs(path, status);
}
}
#endif

namespace {

unsigned long long Joined(unsigned int high, unsigned int low)
{
    return (static_cast<unsigned long long>(high) << 32U) | low;
}

struct FreeSpace
{
    int result;
    unsigned long long bytes;
    QByteArray path;
};

FreeSpace FreeSpaceUnder(QByteArray path)
{
    unsigned int high = 1;
    unsigned int low = 1;
    const int result = rsb_getFreeSpace(path.data(), 0, &high, &low);
    return {result, Joined(high, low), QByteArray(path.constData())};
}

// The bytes df reports as available.
unsigned long long Available(const char* path)
{
    struct statvfs status = {};
    return statvfs(path, &status) == 0 ? status.f_bavail * status.f_frsize : 0;
}

// Whether the free space under a path is that of a volume. Other processes write between the two
// calls: one match within 5 s is enough.
bool HasFreeSpaceOf(const QByteArray& path, const QByteArray& volume)
{
    const QDeadlineTimer deadline(5000);
    bool equal = false;
    while (!equal && !deadline.hasExpired()) {
        equal = FreeSpaceUnder(path).bytes == Available(volume.constData());
    }
    return equal;
}

} // namespace

class DiskTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QCOMPARE(inner_initUnicodeMap("UTF-8"), 0); }

    void freeSpaceUnderAFolder()
    {
        const QTemporaryDir folder;
        const QByteArray path = folder.path().toUtf8();
        QVERIFY2(HasFreeSpaceOf(path, path), "not what df reports for the folder");
        QCOMPARE(FreeSpaceUnder(path).result, 0);
        QCOMPARE(FreeSpaceUnder(path).path, path);
    }

    void aRelativePathHasNoFreeSpace()
    {
        QCOMPARE(FreeSpaceUnder("relative/path").result, 0);
        QCOMPARE(FreeSpaceUnder("relative/path").bytes, 0ULL);
        QCOMPARE(FreeSpaceUnder("").result, 0);
    }

    void aFolderToBeCreatedHasTheSpaceOfItsNearestParent()
    {
        QVERIFY2(HasFreeSpaceOf("/no/such/dir", "/"), "not what df reports for /");
        QCOMPARE(FreeSpaceUnder("/no/such/dir").path, QByteArray("/"));
        const QTemporaryDir folder;
        const QByteArray path = folder.path().toUtf8();
        QCOMPARE(FreeSpaceUnder(path + "/a/b/").path, path);
        QVERIFY2(HasFreeSpaceOf(path + "/a/b/", path), "not what df reports for the parent");
    }

    void aDiskThatDoesNotAnswerIsAFailure()
    {
#ifdef WRAPS_SYSTEM_CALLS
        g_diskFails = true;
        const FreeSpace space = FreeSpaceUnder("/tmp/some/where");
        g_diskFails = false;
        QCOMPARE(space.result, -1);
        QCOMPARE(space.bytes, 0ULL);
        QCOMPARE(space.path, QByteArray("/"));
#else
        QSKIP("no wrapped system call here");
#endif
    }

    // On most current file systems, block and fragment size are equal, and nothing is reserved for
    // root.
    void freeSpaceIsInFragmentsAndOfTheUser()
    {
#ifdef WRAPS_SYSTEM_CALLS
        struct statvfs disk = {};
        disk.f_bsize = 65536;
        disk.f_frsize = 512;
        disk.f_blocks = 0x5'0000'0000;
        disk.f_bfree = 0x4'0000'0000;
        disk.f_bavail = 0x3'0000'0001;
        g_disk = &disk;
        const FreeSpace space = FreeSpaceUnder("/tmp");
        g_disk = nullptr;
        QCOMPARE(space.bytes, 0x3'0000'0001ULL * 512);
#else
        QSKIP("no wrapped system call here");
#endif
    }

    void stateOfAnOpenFile()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath("five"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write("12345"), 5);
        QVERIFY(file.flush());
        STRUCT_RSB_FILE_ATTR attr = {};
        QCOMPARE(rsb_statH(file.handle(), &attr), 0);
        QCOMPARE(attr.size, 5ULL);
        QVERIFY2(attr.modificationTime > 1500000000,
                 "the time of the last change is not of this century");
        int low = -1;
        int high = -1;
        QCOMPARE(rsb_getFileSizeH(file.handle(), &low, &high), 0);
        QCOMPARE(low, 5);
        QCOMPARE(high, 0);
    }

    void sizesOver4GiBComeInTwoHalves()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath("sparse"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        if (!file.resize((5LL << 32) + 3)) {
            QSKIP("this disk takes no file of 20 GiB, not even one with nothing in it");
        }
        int low = 0;
        int high = 0;
        QCOMPARE(rsb_getFileSizeH(file.handle(), &low, &high), 0);
        QCOMPARE(high, 5);
        QCOMPARE(low, 3);
    }

    void aDescriptorThatIsNotOpenFails()
    {
        STRUCT_RSB_FILE_ATTR attr = {};
        int low = 0;
        int high = 0;
        QCOMPARE(rsb_statH(-1, &attr), -1);
        QCOMPARE(rsb_getFileSizeH(-1, &low, &high), -1);
    }

    void sizeOfAFileByItsWidePath()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QString::fromUtf8("L\u00e4nge"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write("1234567"), 7);
        file.close();
        unsigned long long size = 0;
        QCOMPARE(GetFileByteSize(path.toStdWString().c_str(), size), 0);
        QCOMPARE(size, 7ULL);
    }

    void aFileIsClosedWhenItsSizeIsKnown()
    {
        const auto nextDescriptor = [] {
            const int next = dup(0);
            close(next);
            return next;
        };
        const int before = nextDescriptor();
        unsigned long long size = 0;
        QCOMPARE(GetFileByteSize(L"/etc/passwd", size), 0);
        QCOMPARE(nextDescriptor(), before);
    }

    void aFileThatCannotBeOpenedGivesTheSystemsError()
    {
        unsigned long long size = 77;
        QCOMPARE(GetFileByteSize(L"/no/such/file", size), ENOENT);
        QCOMPARE(GetFileByteSize(std::wstring(300, L'x').c_str(), size), EILSEQ);
        QCOMPARE(size, 77ULL);
    }
};

QTEST_APPLESS_MAIN(DiskTest)
#include "disk_test.moc"
