// Joins in which something is odd, missing, damaged or changed meanwhile.
#include "tests/support/tool_joins.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTest>

class ToolJoinFaultsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void conversionCountsOnceAndTakesNoRoom();
    void conversionReplacesNothing();
    void conversionWithoutAFolderFails();
    void unreadableSourceIsTold_data();
    void unreadableSourceIsTold();
    void changedSourceIsTold_data();
    void changedSourceIsTold();
    void partThatIsNoNoteIsTold_data();
    void partThatIsNoNoteIsTold();
    void missingPartIsTold();
    void emptyListFails();
    void oddNamesAreJoined_data();
    void oddNamesAreJoined();
    void nameThatIsNoTextIsJoined();
    void folderWithABarInItsName();
    void removedFilesAreJoinedToTheEnd_data();
    void removedFilesAreJoinedToTheEnd();
    void quitStopsTheJoin();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    QString Path(const QString& name) const { return m_folder.Path(name); }
    void CheckFailure(const Outcome& outcome, const char* mark);

    JoinFolder m_folder;
};

static QStringList ConvertArguments(const QString& source, const QString& part)
{
    return {"-i", source, "-vcodec", "copy", "-acodec", "copy", "-vbsf", "h264_mp4toannexb", part};
}

void ToolJoinFaultsTest::CheckFailure(const Outcome& outcome, const char* mark)
{
    QVERIFY2(outcome.code > 0, outcome.error);
    QVERIFY2(outcome.error.contains(mark), outcome.error);
    QVERIFY2(!outcome.error.contains("frame="), outcome.error);
    QVERIFY2(FileNames(QFileInfo(m_folder.Result()).path()).filter("Merge_").isEmpty(),
             "a result is left");
}

void ToolJoinFaultsTest::initTestCase()
{
    QCOMPARE(m_folder.Make({"plain.mp4", "size.mp4"}), QByteArray());
    QVERIFY(QDir().mkpath(Path("parts")));
}

void ToolJoinFaultsTest::conversionCountsOnceAndTakesNoRoom()
{
    const Outcome outcome =
        RunProgram(TOOL_PROGRAM, ConvertArguments(Path("plain.mp4"), Path("parts/30.ts")));
    QCOMPARE(outcome.code, 0);
    QCOMPARE((outcome.output + outcome.error).count("frame="), 1);
    QVERIFY2(QFileInfo(Path("parts/30.ts")).size() < 1000, "the movie was copied");
}

void ToolJoinFaultsTest::conversionReplacesNothing()
{
    QVERIFY(Write(Path("parts/31.ts"), "mine"));
    const Outcome outcome =
        RunProgram(TOOL_PROGRAM, ConvertArguments(Path("plain.mp4"), Path("parts/31.ts")));
    QVERIFY2(outcome.code > 0 && !outcome.error.contains("frame="), outcome.error);
    QCOMPARE(Content(Path("parts/31.ts")), QByteArray("mine"));
}

void ToolJoinFaultsTest::conversionWithoutAFolderFails()
{
    const Outcome outcome =
        RunProgram(TOOL_PROGRAM, ConvertArguments(Path("plain.mp4"), Path("removed/1.ts")));
    QVERIFY2(outcome.code > 0 && outcome.error.contains("No such file"), outcome.error);
    QVERIFY(!QFile::exists(Path("removed")));
}

void ToolJoinFaultsTest::unreadableSourceIsTold_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("mark");
    const QByteArray movie = Content(Path("plain.mp4"));
    QTest::newRow("missing") << QByteArray() << QByteArray("No such file");
    QTest::newRow("text") << QByteArray(20000, 'x') << QByteArray("Invalid data");
    QTest::newRow("one byte") << QByteArray("x") << QByteArray("Invalid data");
    QTest::newRow("without its end") << movie.left(movie.size() / 2) << QByteArray("Invalid data");
    QTest::newRow("a folder") << QByteArray("/") << QByteArray("Invalid data");
}

void ToolJoinFaultsTest::unreadableSourceIsTold()
{
    QFETCH(QByteArray, content);
    QFETCH(QByteArray, mark);
    const QString source = Path("unreadable.mp4");
    QFile::remove(source);
    if (!content.isEmpty() && content != "/") {
        QVERIFY(Write(source, content));
    }
    const QString part = Path("parts/32.ts");
    const Outcome outcome =
        RunProgram(TOOL_PROGRAM, ConvertArguments(content == "/" ? Path("parts") : source, part));
    CheckFailure(outcome, mark);
    QVERIFY2(!QFile::exists(part), "a part is left");
}

void ToolJoinFaultsTest::changedSourceIsTold_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<QByteArray>("mark");
    QTest::newRow("removed") << "rm changing.mp4" << QByteArray("No such file");
    QTest::newRow("renamed") << "mv changing.mp4 other.mp4" << QByteArray("No such file");
    QTest::newRow("longer") << "printf x >>changing.mp4" << QByteArray("Invalid data");
    QTest::newRow("another one") << "cp -p changing.mp4 new.mp4 && mv new.mp4 changing.mp4"
                                 << QByteArray("Invalid data");
    QTest::newRow("written over") << "printf x | dd of=changing.mp4 conv=notrunc seek=9 status=none"
                                  << QByteArray("Invalid data");
    QTest::newRow("a folder") << "rm changing.mp4 && mkdir changing.mp4"
                              << QByteArray("Invalid data");
    // Opening a pipe waits for a writer.
    QTest::newRow("a pipe") << "rm changing.mp4 && mkfifo changing.mp4"
                            << QByteArray("Invalid data");
}

void ToolJoinFaultsTest::changedSourceIsTold()
{
    QFETCH(QString, change);
    QFETCH(QByteArray, mark);
    const auto run = [this](const QString& script) {
        return RunProgram("/bin/sh", {"-c", script}, Path("")).code;
    };
    QCOMPARE(run("rm -rf changing.mp4 other.mp4 && cp plain.mp4 changing.mp4"), 0);
    const QStringList parts = {m_folder.Convert("plain.mp4", "parts", 1),
                               m_folder.Convert("changing.mp4", "parts", 2)};
    QCOMPARE(run(change), 0);
    CheckFailure(m_folder.Join(parts), mark);
}

void ToolJoinFaultsTest::partThatIsNoNoteIsTold_data()
{
    QTest::addColumn<QByteArray>("content");
    const QByteArray note = Content(m_folder.Convert("plain.mp4", "parts", 1));
    QVERIFY(!note.isEmpty());
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray(20000, 'x');
    QTest::newRow("cut off") << note.chopped(1);
    QTest::newRow("another file") << QByteArray(note).replace(Path("plain.mp4").toUtf8(),
                                                              "/dev/zero");
    QTest::newRow("a movie") << Content(Path("plain.mp4"));
    QTest::newRow("huge") << QByteArray(1 << 20, '\0');
}

void ToolJoinFaultsTest::partThatIsNoNoteIsTold()
{
    QFETCH(QByteArray, content);
    const QString part = m_folder.Convert("plain.mp4", "parts", 1);
    QVERIFY(Write(Path("parts/8.ts"), content));
    CheckFailure(m_folder.Join({part, Path("parts/8.ts")}), "Invalid data");
}

void ToolJoinFaultsTest::missingPartIsTold()
{
    const QString part = m_folder.Convert("plain.mp4", "parts", 1);
    CheckFailure(m_folder.Join({part, Path("parts/99.ts")}), "No such file");
}

void ToolJoinFaultsTest::emptyListFails()
{
    QStringList arguments = m_folder.JoinArguments({});
    arguments[1] = "concat:";
    CheckFailure(RunProgram(TOOL_PROGRAM, arguments), "Invalid data");
}

void ToolJoinFaultsTest::oddNamesAreJoined_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name :
         {" begins and ends with a blank.mp4 ", "Ann's 'best' one.mp4", "\"quoted\".mp4",
          "two\nlines.mp4", "a|b|.mp4", "concat:x.mp4", "-i.mp4", "%d%%s.mp4", "file 'x'.mp4",
          "subfile,,end,9,,:x.mp4", "frame= Invalid data.mp4", "\u4e2d\u00e4.mp4", "#\\'.mp4"}) {
        QTest::newRow(name) << QString(name);
    }
}

void ToolJoinFaultsTest::oddNamesAreJoined()
{
    QFETCH(QString, name);
    for (const char* other : {"plain.mp4", "size.mp4"}) {
        QFile::remove(Path(name));
        QVERIFY(QFile::copy(Path(other), Path(name)));
        const Outcome outcome = m_folder.Merge({"plain.mp4", name});
        QVERIFY2(outcome.code == 0, outcome.error);
        QCOMPARE(m_folder.FaultIn({"plain.mp4", name}), QByteArray());
        QFile::remove(m_folder.Result());
    }
    QVERIFY(QFile::remove(Path(name)));
}

void ToolJoinFaultsTest::nameThatIsNoTextIsJoined()
{
    const QStringList script = {
        "-c",
        "name=$(printf 'a\\377\\n-b.mp4') && cp plain.mp4 \"$name\" && "
        "\"$0\" -i \"$name\" -vcodec copy -acodec copy -vbsf h264_mp4toannexb parts/40.ts",
        TOOL_PROGRAM};
    QCOMPARE(RunProgram("/bin/sh", script, Path("")).code, 0);
    const QString part = m_folder.Convert("plain.mp4", "parts", 1);
    const Outcome outcome = m_folder.Join({part, Path("parts/40.ts")});
    QVERIFY2(outcome.code == 0, outcome.error);
    QCOMPARE(m_folder.FaultIn({"plain.mp4", "plain.mp4"}), QByteArray());
    QFile::remove(m_folder.Result());
}

void ToolJoinFaultsTest::folderWithABarInItsName()
{
    for (const QStringList& sources :
         {QStringList{"plain.mp4", "plain.mp4"}, QStringList{"plain.mp4", "size.mp4"}}) {
        const Outcome outcome = m_folder.Merge(sources, "a|b 'c' %1\n|d");
        QVERIFY2(outcome.code == 0, outcome.error);
        QCOMPARE(m_folder.FaultIn(sources), QByteArray());
        QFile::remove(m_folder.Result());
    }
}

void ToolJoinFaultsTest::removedFilesAreJoinedToTheEnd_data()
{
    QTest::addColumn<QStringList>("sources");
    QTest::newRow("copied") << QStringList{"plain.mp4", "longer.mp4", "plain.mp4"};
    QTest::newRow("encoded") << QStringList{"longer.mp4", "size.mp4", "44100.mp4", "mute.mp4"};
}

// The recorder waits half a minute, then deletes the parts, even if the join is still running.
void ToolJoinFaultsTest::removedFilesAreJoinedToTheEnd()
{
    QFETCH(QStringList, sources);
    QCOMPARE(m_folder.Make(sources), QByteArray());
    QStringList parts;
    QStringList copies;
    for (const QString& source : sources) {
        const QString copy = QString("removed %1.mp4").arg(parts.size());
        QVERIFY(QFile::copy(Path(source), Path(copy)));
        copies << Path(copy);
        parts << m_folder.Convert(copy, "parts", static_cast<int>(parts.size()) + 1);
    }
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(TOOL_PROGRAM, m_folder.JoinArguments(parts));
    QByteArray text;
    while (!text.contains("Stream #") && process.waitForReadyRead()) {
        text += process.readAll();
    }
    QVERIFY2(text.contains("Stream #"), text);
    for (const QString& file : parts + copies) {
        QVERIFY(QFile::remove(file));
    }
    QVERIFY(process.waitForFinished());
    QVERIFY2(process.exitCode() == 0, process.readAll());
    QCOMPARE(m_folder.FaultIn(sources), QByteArray());
    QFile::remove(m_folder.Result());
}

void ToolJoinFaultsTest::quitStopsTheJoin()
{
    QCOMPARE(m_folder.Make({"long.mp4"}), QByteArray());
    const QStringList parts = {m_folder.Convert("long.mp4", "parts", 1),
                               m_folder.Convert("size.mp4", "parts", 2)};
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(TOOL_PROGRAM, m_folder.JoinArguments(parts));
    QByteArray text;
    while (process.waitForReadyRead()) {
        text += process.readAll();
        process.write("q\r\n");
    }
    QVERIFY2(process.state() == QProcess::NotRunning || process.waitForFinished(), text);
    QVERIFY2(process.exitCode() != 0, text);
    QVERIFY2(FileNames(Path("")).filter("Merge_").isEmpty(), "something is left");
}

QTEST_GUILESS_MAIN(ToolJoinFaultsTest)
#include "tool_join_faults_test.moc"
