// Free space as it is asked for on macOS, where the disk is made up.
#include "util/free_bytes.h"

#include <QTest>

#include <cerrno>
#include <sys/vfs.h>

extern "C" {
int __wrap_statfs(const char* path, struct statfs* status); // NOLINT: the linker's name
int __wrap_statfs(const char* path, struct statfs* status)  // NOLINT
{
    if (qstrcmp(path, "/large") != 0) {
        errno = ENOENT;
        return -1;
    }
    *status = {};
    status->f_bsize = 4096;
    status->f_bfree = 0x2'0000'0000;
    status->f_bavail = 0x1'4000'0000;
    return 0;
}
}

class FreeBytesMacosTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void diskAboveSixteenTebibytesIsCountedInFull()
    {
        constexpr unsigned long long tebibyte = 1ULL << 40U;
        QCOMPARE(FreeBytesAt("/large"), std::optional(20 * tebibyte));
    }

    void missingFolderHasNoDisk() { QVERIFY(!FreeBytesAt("/missing")); }
};

QTEST_APPLESS_MAIN(FreeBytesMacosTest)
#include "free_bytes_macos_test.moc"
