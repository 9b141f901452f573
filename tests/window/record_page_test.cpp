#include "jobs/free_space.h"
#include "jobs/text_codec.h"
#include "tests/window/fake_tool.h"
#include "tests/window/modal_boxes.h"
#include "util/format.h"

#include <QComboBox>
#include <QLineEdit>

class RecordPageTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
    void init() { Prepare(); }
    void cleanup() { CloseWindow(); }

    void theAudioChoicesAreThoseOfTheListingAndNone()
    {
        OpenWindow();
        QCOMPARE(
            Choices(),
            QString("Computer sounds and Microphone=-1; Computer sounds=2; Microphone=0; None=-2"));
        QCOMPARE(DRUI::m_pAudioComBox->currentIndex(), 0);
        QCOMPARE(DRUI::m_pAudioComBox->itemData(3), QVariant(4294967294U));
    }

    void theListingAsksForABlankInput()
    {
        InstallTool("#!/bin/sh\nprintf '%s\\n' \"$@\" >\"$(dirname \"$0\")/arguments\"\n");
        OpenWindow();
        QCOMPARE(ToolArguments(),
                 QStringList({"-f", "avfoundation", "-list_devices", "true", "-i", " "}));
    }

    void withoutASoundDeviceNoneIsTheOnlyChoice_data()
    {
        QTest::addColumn<QByteArray>("tool");
        QTest::newRow("a listing without audio")
            << QByteArray("#!/bin/sh\necho 'x video devices:'; echo 'x [0] Capture screen 0'\n");
        QTest::newRow("a tool that prints nothing") << QByteArray("#!/bin/sh\n");
        QTest::newRow("a tool that dies at once") << QByteArray("#!/bin/sh\nkill -9 $$\n");
        QTest::newRow("a tool that prints zero bytes")
            << QByteArray("#!/bin/sh\nhead -c 100000 /dev/zero\n");
        QTest::newRow("a tool that is no program") << QByteArray("\x7f"
                                                                 "ELF garbage");
    }

    void withoutASoundDeviceNoneIsTheOnlyChoice()
    {
        QFETCH(QByteArray, tool);
        InstallTool(tool);
        OpenWindow();
        QCOMPARE(Choices(), QString("None=-2"));
        QCOMPARE(DRUI::m_pAudioComBox->currentIndex(), 0);
    }

    void aMissingToolLeavesNone()
    {
        QFile::remove(BesideProgram("tool"));
        OpenWindow();
        QCOMPARE(Choices(), QString("None=-2"));
    }

    void aToolThatMayNotBeExecutedLeavesNone()
    {
        QFile::setPermissions(BesideProgram("tool"), QFile::ReadOwner | QFile::WriteOwner);
        OpenWindow();
        QCOMPARE(Choices(), QString("None=-2"));
    }

    void aListingThatFloodsTheWindowIsCutOff()
    {
        InstallTool("#!/bin/sh\ncat \"$(dirname \"$0\")/listing\"; yes 'noise without end' | head "
                    "-c 200000000\n");
        OpenWindow();
        QCOMPARE(
            Choices(),
            QString("Computer sounds and Microphone=-1; Computer sounds=2; Microphone=0; None=-2"));
    }

    void choosingASoundStoresItsData()
    {
        OpenWindow();
        DRUI::m_pAudioComBox->setCurrentIndex(1);
        QCOMPARE(DRUI::m_nSelectedDeviceID, 2U);
        DRUI::m_pAudioComBox->setCurrentIndex(3);
        QCOMPARE(DRUI::m_nSelectedDeviceID, 4294967294U);
        DRUI::m_pAudioComBox->setCurrentIndex(0);
        QCOMPARE(DRUI::m_nSelectedDeviceID, 4294967295U);
    }

    void theFirstStartShowsTheHomeDirectoryAndMakesNoSettingsFile()
    {
        QFile::remove(BesideProgram("ScreenRecord.ini"));
        OpenWindow();
        QCOMPARE(Child<QLineEdit>("m_pSaveDirEdit")->text(), QDir::homePath() + "/ScreenSave");
        QVERIFY(!Child<QLineEdit>("m_pSaveDirEdit")->isEnabled());
        CloseWindow();
        QVERIFY2(!QFile::exists(BesideProgram("ScreenRecord.ini")), "a settings file was made");
    }

    void theFreeSpaceIsThatOfTheSaveDirectorysVolume_data()
    {
        QTest::addColumn<QString>("directory");
        QTest::newRow("the save directory") << QString();
        QTest::newRow("another volume on Linux") << "/dev/shm";
    }

    void theFreeSpaceIsThatOfTheSaveDirectorysVolume()
    {
        QFETCH(QString, directory);
        if (directory.isEmpty()) {
            directory = SaveDirectory();
        }
        WriteFile(BesideProgram("ScreenRecord.ini"),
                  "[screen_record]\nsave_path=" + directory.toUtf8() + '\n');
        const auto free = [&directory] {
            return FromEightBit(GetFileSizeString(static_cast<qint64>(FreeBytes(directory))));
        };
        // Other processes write to the volume too, so compare only when nothing changed.
        QString before;
        QString after;
        for (int attempt = 0; attempt < 50 && (before.isEmpty() || before != after); ++attempt) {
            before = free();
            OpenWindow();
            after = free();
        }
        QCOMPARE(before, after);
        QCOMPARE(Child<QLabel>("m_pFreeSpaceLabel")->text(), before);
        QVERIFY2(before.contains(QRegularExpression("^[0-9]+\\.[0-9]{2} [KMGT]B$")),
                 qPrintable(before));
    }

    void anEmptySaveDirectoryLeavesTheFreeSpaceUnknown()
    {
        WriteFile(BesideProgram("ScreenRecord.ini"), "[screen_record]\nsave_path=\n");
        OpenWindow();
        QCOMPARE(Child<QLineEdit>("m_pSaveDirEdit")->text(), QString());
        QCOMPARE(Child<QLabel>("m_pFreeSpaceLabel")->text(), QString("Unknow"));
    }

    // The field is disabled, and its style sets no text colour.
    void theSaveDirectoryIsLegible()
    {
        EnterRecordPage();
        const QImage image = Child<QLineEdit>("m_pSaveDirEdit")->grab().toImage();
        int dark = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                dark += image.pixelColor(x, y).lightness() < 80 ? 1 : 0;
            }
        }
        QVERIFY2(dark > 100, qPrintable(QString("%1 dark pixels are no text").arg(dark)));
    }

    void cancellingTheChooserChangesNothing()
    {
        EnterRecordPage();
        const QByteArray before = ReadFile(BesideProgram("ScreenRecord.ini"));
        ChooseDirectory(QString());
        QCOMPARE(Child<QLineEdit>("m_pSaveDirEdit")->text(), SaveDirectory());
        QCOMPARE(ReadFile(BesideProgram("ScreenRecord.ini")), before);
    }

    void aChosenDirectoryIsShownAndKeptForTheNextStart()
    {
        const QTemporaryDir chosen;
        EnterRecordPage();
        ChooseDirectory(chosen.path());
        QCOMPARE(Child<QLineEdit>("m_pSaveDirEdit")->text(), chosen.path());
        OpenWindow();
        QCOMPARE(Child<QLineEdit>("m_pSaveDirEdit")->text(), chosen.path());
    }

    // As in a bundle that macOS starts from a read-only place. A folder in the file's place keeps
    // root out too.
    void aDirectoryThatCannotBeKeptHoldsForThisRun()
    {
        const QString settings = BesideProgram("ScreenRecord.ini");
        QFile::remove(settings);
        QVERIFY(QDir().mkpath(settings + "/taken"));
        const QTemporaryDir chosen;
        EnterRecordPage();
        ChooseDirectory(chosen.path());
        QCOMPARE(Child<QLineEdit>("m_pSaveDirEdit")->text(), chosen.path());
        Call("btnSlotRecord");
        const QString command = Child<QProcess>("m_pRecProcess")->arguments().join(' ');
        QVERIFY2(command.contains(chosen.path()), qPrintable("recorded elsewhere: " + command));
        CloseWindow();
        QVERIFY(QDir(settings).removeRecursively());
    }

private:
    static QString Choices()
    {
        QStringList choices;
        for (int i = 0; i < DRUI::m_pAudioComBox->count(); ++i) {
            choices << QString("%1=%2")
                           .arg(DRUI::m_pAudioComBox->itemText(i))
                           .arg(DRUI::m_pAudioComBox->itemData(i).toInt());
        }
        return choices.join("; ");
    }

    // Clicks the folder button and answers with `path`, or with Cancel if it is null.
    void ChooseDirectory(const QString& path)
    {
        ModalBoxes boxes;
        boxes.directory = path;
        Call("btnSlotLayout2Dir");
        QCOMPARE(boxes.choosers, 1);
    }
};

QTEST_MAIN(RecordPageTest)
#include "record_page_test.moc"
