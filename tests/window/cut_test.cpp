#include "tests/window/job_tool.h"
#include "ui/scanui.h"

#include <QProgressBar>

namespace {
const QString kFailure = "Clip failed, not an valid format, it's better to clip created mp4 files";
} // namespace

class CutTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { PrepareVideos(); }
    void cleanup() { FinishVideos(); }

    void aCutGoesIntoTheChosenFolderAndTellsItsPath()
    {
        SelectRange("a b.mp4", 10, 25);
        Press("Cut");
        QCOMPARE(Calls(), QStringList{"<-i><" + SaveDirectory() +
                                      "/a b.mp4><-ss><10><-t><15><-codec><copy><" + Target() +
                                      "/Cut_a b.mp4>"});
        QCOMPARE(Results(), QStringList{"Cut_a b.mp4"});
        QCOMPARE(Boxes().texts, QStringList{Success("Cut_a b.mp4")});
        QCOMPARE(Page(), 2);
    }

    void theCommandLineIsLogged()
    {
        SelectRange("a.mp4", 1, 2);
        QTest::ignoreMessage(QtDebugMsg,
                             qPrintable(QDebug::toString(ToolLine() + " -i \"" + SaveDirectory() +
                                                         "/a.mp4\"  -ss 1 -t 1 -codec copy  \"" +
                                                         Target() + "/Cut_a.mp4\" ")));
        Press("Cut");
    }

    void namesOfAnyKindReachTheTool_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("other letters") << QString::fromUtf8("Müller 录像 🎬.mp4");
        QTest::newRow("per cent") << "100%1 %s.mp4";
        QTest::newRow("leading dash") << "-y.mp4";
        QTest::newRow("bar") << "a|b.mp4";
        QTest::newRow("single quote") << "it's.mp4";
        QTest::newRow("dollar and backslash") << "$HOME \\n `x`.mp4";
        QTest::newRow("very long") << QString(245, 'n') + ".mp4";
    }

    void namesOfAnyKindReachTheTool()
    {
        QFETCH(QString, name);
        SelectRange(name, 1, 3);
        Press("Cut");
        QCOMPARE(Calls().join(' ').count('<' + SaveDirectory() + '/' + name + '>'), 1);
        QCOMPARE(Results(), QStringList{"Cut_" + name});
        QCOMPARE(Boxes().texts, QStringList{Success("Cut_" + name)});
    }

    void aDoubleQuoteInTheNameBreaksTheCommandLineAndHarmsNothing()
    {
        SelectRange("a\"b.mp4", 1, 3);
        Press("Cut");
        QCOMPARE(Calls().join(' ').count("ab.mp4"), 2);
        QCOMPARE(ReadFile(SaveDirectory() + "/a\"b.mp4"), QByteArray("00:00:30\n"));
    }

    void aTakenNameIsNumberedAndTheFileKept()
    {
        WriteFile(Target() + "/Cut_a.mp4", "mine");
        SelectRange("a.mp4", 0, 5);
        Press("Cut");
        QCOMPARE(Results(), QStringList({"Cut_a (1).mp4", "Cut_a.mp4"}));
        QCOMPARE(ReadFile(Target() + "/Cut_a.mp4"), QByteArray("mine"));
        QCOMPARE(Boxes().texts, QStringList{Success("Cut_a (1).mp4")});
    }

    void anEndBeforeTheStartGivesTheToolANegativeLength()
    {
        SelectRange("a.mp4", 20, 5);
        Press("Cut");
        QVERIFY(Calls().join(' ').contains("<-ss><20><-t><-15>"));
    }

    void pressedBeforeAVideoIsSelectedItRunsWithoutASource()
    {
        MakeVideo("a.mp4");
        EnterCutPage();
        Calls();
        Press("Cut");
        QCOMPARE(Calls(), QStringList{"<-i><-ss><0><-t><0><-codec><copy><" + Target() + "/Cut_>"});
    }

    void aCancelledChooserCutsNothing()
    {
        SelectRange("a.mp4", 1, 2);
        Boxes().directory = QString();
        Press("Cut");
        QCOMPARE(Boxes().choosers, 1);
        QCOMPARE(Calls(), QStringList());
        QCOMPARE(Boxes().texts, QStringList());
    }

    void theNextChooserBeginsWhereTheLastCutWent()
    {
        SelectRange("a.mp4", 1, 2);
        Press("Cut");
        Press("Cut");
        QCOMPARE(Boxes().startDirectory, Target());
        QCOMPARE(Results(), QStringList({"Cut_a (1).mp4", "Cut_a.mp4"}));
        Boxes().directory = QString();
        Press("Cut");
        const QFileDialog elsewhere(nullptr, QString(), SaveDirectory());
        Press("Cut"); // after a cancelled chooser it starts at the default place
        QCOMPARE(Boxes().startDirectory, SaveDirectory());
    }

    void theProgressDialogStandsOverTheWindowWhileTheToolRuns()
    {
        SelectRange("a.mp4", 1, 2);
        QRect place;
        bool modal = true;
        OnOutput([&](SCANUI& dialog) {
            place = dialog.geometry();
            modal = dialog.isModal();
        });
        SetJob("say frame=1; printf made >\"${!#}\"\n");
        Press("Cut");
        QCOMPARE(place, QRect(Window().x() + 250, Window().y() + 150, 500, 250));
        QVERIFY(!modal);
        QVERIFY2(FindDialog() == nullptr, "the dialog outlives the job");
    }

    // The reading slot reads the merge's conversion process instead of the cut's.
    void theCutsOutputIsNeverReadSoTheBarStaysAtZero()
    {
        SelectRange("a.mp4", 1, 2);
        QList<int> values;
        OnOutput([&](SCANUI&) { values << SCANUI::m_progressBar->value(); });
        SetJob("for n in 1 2 3; do say frame=$n; done; printf made >\"${!#}\"\n");
        Press("Cut");
        QCOMPARE(values, QList<int>({0, 0, 0}));
        QCOMPARE(Boxes().texts, QStringList{Success("Cut_a.mp4")});
    }

    void invalidDataEndsWithTheSuccessMessage()
    {
        SelectRange("a.mp4", 1, 2);
        SetJob("echo 'Invalid data found when processing input'; exit 1\n");
        Press("Cut");
        QCOMPARE(Results(), QStringList());
        QCOMPARE(Boxes().texts, QStringList{Success("Cut_a.mp4")});
    }

    void aMissingToolEndsWithTheSuccessMessage()
    {
        SelectRange("a.mp4", 1, 2);
        QFile::remove(BesideProgram("tool"));
        Press("Cut");
        QCOMPARE(Boxes().texts, QStringList{Success("Cut_a.mp4")});
        QCOMPARE(Results(), QStringList());
    }

    void aToolThatCrashesEndsWithTheSuccessMessage()
    {
        SelectRange("a.mp4", 1, 2);
        SetJob("printf half >\"${!#}\"; echo frame=1; kill -9 $$\n");
        Press("Cut");
        QCOMPARE(Boxes().texts, QStringList{Success("Cut_a.mp4")});
    }

    // The tool is not asked to quit: the request goes to the conversion's process.
    void aCancelLetsTheToolRunOnAndRemovesTheFile()
    {
        SelectRange("a.mp4", 1, 2);
        OnOutput([](SCANUI&) { DRUI::m_bisFinished = true; });
        QFile::remove(BesideProgram("finished"));
        SetJob("printf made >\"${!#}\"; say frame=1; say frame=2; say frame=3\n"
               "read -r -t 0.1 -N 1 key && printf '%s' \"$key\" >\"$here/keys\"\n"
               "printf x >\"$here/finished\"\n");
        Press("Cut");
        QCOMPARE(ReadFile(BesideProgram("finished")), QByteArray("x"));
        QVERIFY2(!QFile::exists(BesideProgram("keys")), "the cut's tool was asked to quit");
        QCOMPARE(Results(), QStringList());
        QCOMPARE(Boxes().texts, QStringList({Success("Cut_a.mp4"), kFailure}));
        QCOMPARE(SCANUI::m_nError, 2);
    }

    void theCancelOfAnEarlierJobIsForgotten()
    {
        DRUI::m_bisFinished = true;
        SelectRange("a.mp4", 1, 2);
        SetJob("printf made >\"${!#}\"; echo frame=1\n");
        Press("Cut");
        QVERIFY(!DRUI::m_bisFinished);
        QCOMPARE(Results(), QStringList{"Cut_a.mp4"});
    }

    void aGoodCutAfterACancelledOneTellsFailure()
    {
        SCANUI::m_nError = 2;
        SelectRange("a.mp4", 1, 2);
        Press("Cut");
        QCOMPARE(Boxes().texts, QStringList{kFailure});
        QCOMPARE(Results(), QStringList{"Cut_a.mp4"});
        Press("Cut");
        QCOMPARE(Boxes().texts, QStringList({kFailure, Success("Cut_a (1).mp4")}));
    }

    // With "Cut_" the name is too long for the file system.
    void aNameThatGrowsTooLongEndsWithTheSuccessMessageAndLosesNothing_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<bool>("made");
        QTest::newRow("just right") << 251 << true;
        QTest::newRow("one too long") << 252 << false;
        QTest::newRow("as long as a source can be") << 255 << false;
    }

    void aNameThatGrowsTooLongEndsWithTheSuccessMessageAndLosesNothing()
    {
        QFETCH(int, length);
        QFETCH(bool, made);
        const QString name = QString(length - 4, 'n') + ".mp4";
        WriteFile(Target() + "/other.mp4", "mine");
        SelectRange(name, 1, 3);
        Press("Cut");
        QCOMPARE(Calls().size(), 1);
        QCOMPARE(Boxes().texts, QStringList{Success("Cut_" + name)});
        QCOMPARE(Results(),
                 made ? QStringList({"Cut_" + name, "other.mp4"}) : QStringList{"other.mp4"});
        QCOMPARE(ReadFile(SaveDirectory() + '/' + name), QByteArray("00:00:30\n"));
        QCOMPARE(ReadFile(Target() + "/other.mp4"), QByteArray("mine"));
    }

    void aNewFolderKeepsTheSelectedVideoForTheCut()
    {
        MakeVideo("new.mp4", "00:00:09", Target());
        SelectRange("a.mp4", 1, 2);
        Call("btnSlotLayout3Dir");
        QCOMPARE(Child<QLineEdit>("m_pLayout3DirEdit")->text(), Target());
        Press("Cut");
        QCOMPARE(Calls(),
                 QStringList{"<-i><" + SaveDirectory() + "/a.mp4><-ss><1><-t><1><-codec><copy><" +
                             Target() + "/Cut_a.mp4>"});
    }

    void anOverflowOfOutputDoesNotHang()
    {
        SelectRange("a.mp4", 1, 2);
        SetJob("yes frame=1 | head -c 5000000; printf made >\"${!#}\"\n");
        Press("Cut");
        QCOMPARE(Results(), QStringList{"Cut_a.mp4"});
    }

private:
    // Called with the progress dialog after each chunk of the cut's tool.
    void OnOutput(const std::function<void(SCANUI&)>& look)
    {
        Hear("m_pCutProcess", [look] {
            SCANUI* dialog = FindDialog();
            QVERIFY2(dialog != nullptr, "there is no dialog during the job");
            look(*dialog);
        });
    }

    static SCANUI* FindDialog()
    {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* dialog = qobject_cast<SCANUI*>(widget)) {
                return dialog;
            }
        }
        return nullptr;
    }

    static QString ToolLine() { return '"' + BesideProgram("tool") + '"'; }
    QString Success(const QString& name)
    {
        return "Cut success, file path is " + Target() + '/' + name + ' ';
    }
};

QTEST_MAIN(CutTest)
#include "cut_test.moc"
