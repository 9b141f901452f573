// The note that a conversion leaves for the join.
#include "tests/support/files.h"
#include "tool/edit/part_note.h"

#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <limits>
#include <sys/stat.h>

using tool::FileIdentity;
using tool::NoteText;
using tool::ParseNote;
using tool::PartNote;
using tool::ReadNote;
using tool::WriteNote;

class ToolPartNoteTest : public QObject
{
    Q_OBJECT

private slots:
    void noteIsReadAsItWasWritten_data();
    void noteIsReadAsItWasWritten();
    void noteThatIsIncompleteIsNone();
    void otherTextsAreNoNotes_data();
    void otherTextsAreNoNotes();
    void nothingIsReplaced();
    void noteThatCannotBeWrittenIsTold();
    void pipeIsNotWaitedFor();
};

void ToolPartNoteTest::noteIsReadAsItWasWritten_data()
{
    QTest::addColumn<QByteArray>("source");
    QTest::newRow("plain") << QByteArray("/v/a.mp4");
    QTest::newRow("bar and quotes") << QByteArray("/v/a|'b'\"c\".mp4");
    QTest::newRow("lines") << QByteArray("/v/\na\r\nend\n.mp4");
    QTest::newRow("no text") << QByteArray("/v/\xff\xfe\x01.mp4");
    QTest::newRow("longest") << QByteArray("/v/" + QByteArray(4092, 'x'));
}

void ToolPartNoteTest::noteIsReadAsItWasWritten()
{
    QFETCH(QByteArray, source);
    const FileIdentity least{0, 0, 0, std::numeric_limits<int64_t>::min(), 0};
    const FileIdentity most{
        std::numeric_limits<uint64_t>::max(), std::numeric_limits<uint64_t>::max(),
        std::numeric_limits<uint64_t>::max(), std::numeric_limits<int64_t>::max(), 999999999};
    const QTemporaryDir folder;
    for (const FileIdentity& identity : {least, most}) {
        const PartNote note{source.toStdString(), identity};
        QVERIFY(ParseNote(NoteText(note)) == note);
        const std::string path = folder.filePath(QString::number(identity.size)).toStdString();
        QVERIFY(WriteNote(path, note));
        QVERIFY(ReadNote(path) == note);
    }
}

void ToolPartNoteTest::noteThatIsIncompleteIsNone()
{
    const std::string text = NoteText({"/v/a.mp4", {1, 2, 3, 4, 5}});
    for (size_t size = 0; size < text.size(); ++size) {
        QVERIFY2(!ParseNote(text.substr(0, size)), qPrintable(QString::number(size)));
    }
    QVERIFY(!ParseNote(text + "x"));
    QVERIFY(!ParseNote(text + text));
}

void ToolPartNoteTest::otherTextsAreNoNotes_data()
{
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("to");
    QTest::newRow("relative") << QByteArray("/v/a.mp4") << QByteArray("v/a.mp4");
    QTest::newRow("option") << QByteArray("/v/a.mp4") << QByteArray("-i");
    QTest::newRow("no source") << QByteArray("/v/a.mp4") << QByteArray();
    QTest::newRow("no number") << QByteArray("11") << QByteArray("x");
    QTest::newRow("not only a number") << QByteArray("11") << QByteArray("11 ");
    QTest::newRow("below nothing") << QByteArray("11") << QByteArray("-11");
    QTest::newRow("beyond 64 bits") << QByteArray("11") << QByteArray("18446744073709551616");
    QTest::newRow("other title") << QByteArray("part 1") << QByteArray("part 2");
}

void ToolPartNoteTest::otherTextsAreNoNotes()
{
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    QByteArray text = QByteArray::fromStdString(NoteText({"/v/a.mp4", {11, 22, 33, 44, 55}}));
    QVERIFY(ParseNote(text.toStdString()));
    text.replace(from, to);
    QVERIFY(!ParseNote(text.toStdString()));
}

void ToolPartNoteTest::nothingIsReplaced()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("1.ts");
    QVERIFY(Write(path, "mine"));
    QVERIFY(!WriteNote(path.toStdString(), {"/v/a.mp4", {}}));
    QCOMPARE(errno, EEXIST);
    QCOMPARE(Content(path), QByteArray("mine"));
    const QString link = folder.filePath("2.ts");
    QVERIFY(QFile::link(folder.filePath("elsewhere"), link));
    QVERIFY2(!WriteNote(link.toStdString(), {"/v/a.mp4", {}}), "a note was written through a link");
    QVERIFY(!QFile::exists(folder.filePath("elsewhere")));
}

void ToolPartNoteTest::noteThatCannotBeWrittenIsTold()
{
    const QTemporaryDir folder;
    QVERIFY(!WriteNote(folder.filePath("removed/1.ts").toStdString(), {"/v/a.mp4", {}}));
    QCOMPARE(errno, ENOENT);
    QVERIFY(!ReadNote(folder.filePath("1.ts").toStdString()));
    QCOMPARE(errno, ENOENT);
}

void ToolPartNoteTest::pipeIsNotWaitedFor()
{
    const QTemporaryDir folder;
    const std::string path = folder.filePath("1.ts").toStdString();
    QCOMPARE(mkfifo(path.c_str(), 0600), 0);
    const auto note = ReadNote(path);
    QVERIFY(note && note->source.empty());
}

QTEST_APPLESS_MAIN(ToolPartNoteTest)
#include "tool_part_note_test.moc"
