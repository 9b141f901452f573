#include "tests/window/fake_tool.h"

// The duration the window gets from the tool.
class ProbeTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        Prepare();
        OpenWindow();
    }
    void cleanup() { CloseWindow(); }

    void theToolIsAskedForThePathAndTheDurationRead()
    {
        InstallTool(
            "#!/bin/bash\nprintf '%s\\n' \"$@\" >\"${0%/*}/arguments\"\n"
            "echo \"Input #0, mov\" >&2\nsleep 0.1\n"
            "echo '  Duration: 01:02:03.45, start: 0.000000, bitrate: 1 kb/s' >&2\nexit 1\n");
        const QString path = QString::fromUtf8("/v/a b/\u00e4\u6f22 \U0001f3ac.mp4");
        QCOMPARE(Duration(path), std::string("01:02:03"));
        QCOMPARE(ToolArguments(), QStringList({"-i", path}));
    }

    void whatAnEarlierProbePrintedIsForgotten()
    {
        InstallTool("#!/bin/sh\necho 'Duration: 00:00:09.00'\n");
        QCOMPARE(Duration("/v/a.mp4"), std::string("00:00:09"));
        InstallTool("#!/bin/sh\necho 'no such thing'\n");
        QCOMPARE(Duration("/v/b.mp4"), std::string());
    }

    // A few megabytes are kept, far more than any description of a file.
    void whatFollowsAFloodOfOutputIsNotRead()
    {
        const QByteArray flood = "yes 'noise without end' | head -c 40000000\n";
        InstallTool("#!/bin/sh\necho 'Duration: 00:00:09.00'\n" + flood);
        QCOMPARE(Duration("/v/a.mp4"), std::string("00:00:09"));
        InstallTool("#!/bin/sh\n" + flood + "echo 'Duration: 00:00:09.00'\n");
        QCOMPARE(Duration("/v/a.mp4"), std::string());
    }

    void withoutAToolThereIsNoDuration()
    {
        QFile::remove(BesideProgram("tool"));
        QCOMPARE(Duration("/v/a.mp4"), std::string());
    }

private:
    std::string Duration(const QString& path)
    {
        std::wstring wide = path.toStdWString();
        return Window().GetVedioTimeSeconds(wide.data());
    }
};

QTEST_MAIN(ProbeTest)
#include "probe_test.moc"
