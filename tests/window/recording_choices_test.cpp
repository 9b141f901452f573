#include "tests/window/fake_tool.h"

#include <QComboBox>
#include <QLineEdit>
#include <QProcess>

// What is recorded, and where to.
class RecordingChoicesTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Prepare(); }
    void cleanup() { CloseWindow(); }

    void theToolGetsTheCommandOfTheAudioChoice_data()
    {
        QTest::addColumn<QString>("choice");
        QTest::addColumn<QStringList>("inputs");
        const QStringList first{"-f", "avfoundation", "-framerate", "30", "-i"};
        QTest::newRow("both") << "Computer sounds and Microphone"
                              << first + QStringList{"1:0", "-f", "avfoundation", "-i", "1:2"};
        QTest::newRow("sounds") << "Computer sounds" << first + QStringList{"1:2"};
        QTest::newRow("microphone") << "Microphone" << first + QStringList{"1:0"};
        QTest::newRow("none") << "None" << first + QStringList{"1"};
    }

    void theToolGetsTheCommandOfTheAudioChoice()
    {
        QFETCH(QString, choice);
        QFETCH(QStringList, inputs);
        EnterRecordPage();
        DRUI::m_pAudioComBox->setCurrentText(choice);
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        const QStringList fixed{
            "-ar",  "44100",  "-r", "29.97",    "-preset", "ultrafast", "-max_muxing_queue_size",
            "9999", "-async", "1",  "-pix_fmt", "yuv420p"};
        QCOMPARE(ToolArguments(),
                 inputs + fixed + QStringList{SaveDirectory() + '/' + Recordings().first()});
    }

    void aSecondListingWithoutAScreenKeepsTheScreenOfTheOneBefore()
    {
        EnterRecordPage();
        WriteFile(BesideProgram("listing"), "[x] AVFoundation audio devices:\n"
                                            "[x] [3] Built-in Microphone\n"
                                            "[x] [4] Loopback\n");
        Call("btnMaxSlot"); // lists devices again
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        QCOMPARE(ToolArguments().value(5), QString("1:3"));
        QCOMPARE(ToolArguments().value(9), QString("1:4"));
    }

    void theSaveDirectoryIsMadeOneLevelDeepOnly()
    {
        const QString parent = QFileInfo(SaveDirectory()).path();
        WriteFile(BesideProgram("ScreenRecord.ini"),
                  "[screen_record]\nsave_path=" + parent.toUtf8() + "/missing/Save\n");
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(ReadFile(BesideProgram("starts")), QByteArray("x"));
        QCOMPARE(QDir(parent).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
        Call("btnSlotMenuStop");
        QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);

        QVERIFY(QDir(parent).mkdir("missing"));
        Press("Start");
        QTRY_COMPARE(QDir(parent + "/missing/Save").entryList(QDir::Files).size(), 1);
    }

    void theFileIsNamedByItsStart()
    {
        EnterRecordPage();
        const QDateTime before = QDateTime::currentDateTime();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        const auto named = QDateTime::fromString(Recordings().first(), "yyyy-MM-dd hh-mm-ss'.mp4'");
        QVERIFY2(named.isValid(), qPrintable(Recordings().first()));
        QVERIFY(before.secsTo(named) >= -1 && before.secsTo(named) <= 5);
    }

    void aNameThatIsTakenIsNumberedAndTheFileKept()
    {
        QVERIFY(QDir().mkpath(SaveDirectory()));
        const QDateTime now = QDateTime::currentDateTime();
        for (int i = 0; i < 30; ++i) { // every second the test may take
            WriteFile(SaveDirectory() + now.addSecs(i).toString("/yyyy-MM-dd hh-mm-ss'.mp4'"),
                      "mine");
        }
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 31);
        QVERIFY2(ToolArguments().last().endsWith(" (1).mp4"), qPrintable(ToolArguments().last()));
        for (int i = 0; i < 30; ++i) {
            QCOMPARE(
                ReadFile(SaveDirectory() + now.addSecs(i).toString("/yyyy-MM-dd hh-mm-ss'.mp4'")),
                QByteArray("mine"));
        }
    }

    void theDirectoryAndTheSoundAreReadAtEachStart()
    {
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        Call("btnSlotRecord");
        QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);
        const QTemporaryDir other;
        Child<QLineEdit>("m_pSaveDirEdit")->setText(other.path());
        DRUI::m_pAudioComBox->setCurrentText("Microphone");
        Press("Start");
        QTRY_COMPARE(QDir(other.path()).entryList({"*.mp4"}, QDir::Files).size(), 1);
        QCOMPARE(ToolArguments().value(5), QString("1:0"));
        QCOMPARE(ToolArguments().value(6), QString("-ar"));
        QCOMPARE(Recordings().size(), 1);
        Call("btnSlotRecord");
        QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);
    }

    void withoutAListedScreenTheFirstDeviceIsRecorded()
    {
        WriteFile(BesideProgram("listing"), "[x] AVFoundation audio devices:\n"
                                            "[x] [4] Loopback\n");
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        QCOMPARE(ToolArguments().value(5), QString("0:4"));
    }

    void aSecondListingForgetsTheSoundsOfTheFirst()
    {
        OpenWindow();
        QCOMPARE(DRUI::m_pAudioComBox->count(), 4);
        WriteFile(BesideProgram("listing"), "nothing\n");
        Call("btnMaxSlot"); // lists devices again
        QCOMPARE(DRUI::m_pAudioComBox->count(), 1);
        QCOMPARE(DRUI::m_pAudioComBox->currentText(), QString("None"));
    }

    void theDataOfASoundIsASignedIndexAndThatOfNoneIsNot()
    {
        OpenWindow();
        QList<int> types;
        for (int i = 0; i < DRUI::m_pAudioComBox->count(); ++i) {
            types << DRUI::m_pAudioComBox->itemData(i).typeId();
        }
        QCOMPARE(types,
                 QList<int>({QMetaType::Int, QMetaType::Int, QMetaType::Int, QMetaType::UInt}));
    }
};

QTEST_MAIN(RecordingChoicesTest)
#include "recording_choices_test.moc"
