#include "tests/window/fake_tool.h"

#include <QProcess>
#include <QThread>

// Destroys the window while its tools are still running.
class DestructionTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Prepare(); }
    void cleanup() { CloseWindow(); }

    // The cut's slot reads the conversion's process. A cut that takes longer than its wait of 30 s
    // has output left when its process is deleted, which happens last.
    void theLastOutputOfACutIsReadByNobody()
    {
        DRUI& window = OpenWindow();
        auto* cut = Child<QProcess>("m_pCutProcess");
        const QString ready = BesideProgram("ready");
        QFile::remove(ready);
        cut->startCommand("/bin/sh -c \"echo frame=; touch '" + ready + "'; exec sleep 60\"");
        // No event is processed here, so the output stays unread.
        for (int i = 0; i < 2000 && !QFile::exists(ready); ++i) {
            QThread::msleep(5);
        }
        QVERIFY2(QFile::exists(ready), "the cut did not start");
        bool isRead = false;
        connect(Child<QProcess>("m_pChangeTSProcess"), &QObject::destroyed, this, [&] {
            isRead = disconnect(cut, SIGNAL(readyRead()), &window, SLOT(ReadCutInfo()));
        });
        CloseWindow();
        QVERIFY2(!isRead, "the cut's output is read after the process that its slot reads is gone");
    }

    // A tool that prints nothing is not asked by its output.
    void aSilentRecordingIsAskedToQuitWhenTheWindowCloses()
    {
        InstallTool(R"(#!/bin/bash
here=$(dirname "$0")
if [[ "$*" == *-list_devices* ]]; then cat "$here/listing" >&2; exit 1; fi
printf 'x' >>"$here/starts"
read -r -t 10 -N 3 key
printf '%s' "$key" >"$here/keys"
)");
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(ReadFile(BesideProgram("starts")), QByteArray("x"));
        CloseWindow();
        QCOMPARE(ReadFile(BesideProgram("keys")), QByteArray("q\r\n"));
    }

    void theToolsEndInTheOrderOfTheirKinds()
    {
        OpenWindow();
        const QStringList order{"m_pPlayerProcess",   "m_pDevProcess",   "m_pRecProcess",
                                "m_pChangeTSProcess", "m_pMergeProcess", "m_pCutProcess"};
        QStringList ended;
        for (const QString& name : order) {
            connect(Child<QProcess>(qPrintable(name)), &QObject::destroyed, this,
                    [&ended, name] { ended << name; });
        }
        CloseWindow();
        QCOMPARE(ended, order);
    }
};

QTEST_MAIN(DestructionTest)
#include "destruction_test.moc"
