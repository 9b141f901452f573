#include "jobs/cut_command.h"
#include "jobs/device_listing.h"
#include "jobs/duration.h"
#include "jobs/merge_command.h"
#include "jobs/path_argument.h"
#include "jobs/record_command.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QTest>

// Any path is one argument of the command, and no part of it becomes another one.
class PathArgumentTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aPathWithoutQuotesStaysAsItIs()
    {
        for (const QString& path :
             {QString("/v/a b.mp4"), QString::fromUtf8("/v/ä 录像 🎬 '`$\\|.mp4"),
              QString("/v/line\nend\t.mp4"), QString()}) {
            QCOMPARE(CommandPath(path), path);
            QCOMPARE(Quoted(path), '"' + path + '"');
        }
    }

    void quotesAndZeroCharactersAreTakenOut()
    {
        QCOMPARE(CommandPath("/v/\"a\"\" -y b\"\"\".mp4\""), QString("/v/a -y b.mp4"));
        QCOMPARE(CommandPath(QString("/v/.profile") + QChar::Null + "/x.mp4"),
                 QString("/v/.profile/x.mp4"));
    }

    // Blanks, options, several quotes in a row (three are a literal quote when splitting).
    void everyCommandKeepsEveryPathInOneArgument_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("ordinary") << "/v/a.mp4";
        QTest::newRow("a quote") << "/v/a\"b.mp4";
        QTest::newRow("options behind a quote") << "/v/a\" -c copy -f u8 -y .bashrc -f null \".mp4";
        QTest::newRow("two quotes") << "/v/a\"\" -y x.mp4";
        QTest::newRow("three quotes") << "/v/a\"\"\" -y x.mp4";
        QTest::newRow("four quotes") << "/v/a\"\"\"\" -y x.mp4";
        QTest::newRow("quotes first") << "\"\" -y x.mp4";
        QTest::newRow("quotes last") << "/v/a.mp4 -y x\"\"";
        QTest::newRow("an ending backslash") << "/v/a.mp4\\";
        QTest::newRow("a backslash before a quote") << "/v/a\\\" -y x.mp4";
        QTest::newRow("a zero character") << QString("/v/a") + QChar::Null + " -y x.mp4";
        QTest::newRow("other quotes") << QString::fromUtf8("/v/„a“ ”-y” ＂x＂.mp4");
        QTest::newRow("other blanks") << QString::fromUtf8("/v/a\t-y\nx\u00a0\u2003y\r.mp4");
    }

    void everyCommandKeepsEveryPathInOneArgument()
    {
        QFETCH(QString, path);
        for (const Command& command : CommandsWith(path)) {
            const QStringList split = QProcess::splitCommand(command.line);
            QVERIFY2(split == command.arguments,
                     qPrintable(command.line + "\nis split into <" + split.join("> <") + '>'));
        }
    }

    // The same for random paths of special characters.
    void everyCommandKeepsRandomPathsInOneArgument()
    {
        static constexpr char16_t letters[] = u"\"\"\"\"   --yafi.|:'`$\\/%\n\t\0ä\u2028录";
        QRandomGenerator random(20261122);
        for (int i = 0; i < 20000; ++i) {
            QString path("/");
            for (int length = random.bounded(1, 24); length > 0; --length) {
                path += letters[random.bounded(int(std::size(letters) - 1))];
            }
            for (const Command& command : CommandsWith(path)) {
                const QStringList split = QProcess::splitCommand(command.line);
                QVERIFY2(split == command.arguments, qPrintable(QDebug::toString(command.line)));
            }
        }
    }

    // The screen's index is what the tool printed.
    void theScreensIndexEndsNoArgument()
    {
        const QString line = RecordCommand("t", {'"', 0, 2}, -1, "/s/a.mp4");
        QCOMPARE(QProcess::splitCommand(line).mid(0, 10),
                 QStringList({"t", "-f", "avfoundation", "-framerate", "30", "-i", ":0", "-f",
                              "avfoundation", "-i"}));
        QCOMPARE(QProcess::splitCommand(line).size(), 24);
    }

private:
    struct Command
    {
        QString line;
        QStringList arguments;
    };

    // Every command the program forms, with `path` in every place of a path.
    static QList<Command> CommandsWith(const QString& path)
    {
        const QString tool = Quoted(path + "/tool");
        const QString program = CommandPath(path + "/tool");
        const QString file = CommandPath(path);
        const QStringList fixed =
            QString("-ar 44100 -r 29.97 -preset ultrafast -max_muxing_queue_size 9999 -async 1 "
                    "-pix_fmt yuv420p")
                .split(' ');
        return {
            {ProbeCommand(tool, path), {program, "-i", file}},
            {DeviceListCommand(tool),
             {program, "-f", "avfoundation", "-list_devices", "true", "-i", " "}},
            {RecordCommand(tool, {'1', 0, 2}, 2, path),
             QStringList({program, "-f", "avfoundation", "-framerate", "30", "-i", "1:2"}) + fixed +
                 QStringList{file}},
            {CutCommand(tool, path, 1, 3, path),
             {program, "-i", file, "-ss", "1", "-t", "2", "-codec", "copy", file}},
            {ChangeToTSCommand(tool, path, path),
             {program, "-i", file, "-vcodec", "copy", "-acodec", "copy", "-vbsf",
              "h264_mp4toannexb", file}},
            {ConcatCommand(tool, {path, path}, path),
             {program, "-i", "concat:" + file + '|' + file + '|', "-acodec", "copy", "-vcodec",
              "copy", "-absf", "aac_adtstoasc", file}},
        };
    }
};

QTEST_APPLESS_MAIN(PathArgumentTest)
#include "path_argument_test.moc"
