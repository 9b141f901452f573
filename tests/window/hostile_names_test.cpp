#include "tests/window/job_tool.h"

#include <QSettings>
#include <QStandardPaths>

namespace {

// A file or folder name with ffmpeg options after a quote that would end the argument.
const QString kHostile = "a\" -c copy -f u8 -y .bashrc -f null \"";
const QString kHarmless = "a -c copy -f u8 -y .bashrc -f null ";

// A second of 8-bit sound whose samples are `text`, repeated.
QByteArray Wav(const QByteArray& text)
{
    constexpr qsizetype rate = 8000;
    const QByteArray samples = text.repeated(rate / text.size());
    const auto number = [](qsizetype value, int bytes) {
        QByteArray little;
        for (int i = 0; i < bytes; ++i) {
            little += static_cast<char>(value >> (8 * i) & 0xff);
        }
        return little;
    };
    return "RIFF" + number(36 + samples.size(), 4) + "WAVEfmt " + number(16, 4) + number(1, 2) +
           number(1, 2) + number(rate, 4) + number(rate, 4) + number(1, 2) + number(8, 2) + "data" +
           number(samples.size(), 4) + samples;
}

QStringList AllFiles(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

} // namespace

// Names of files and folders with double quotes reach the tool as part of one argument.
class HostileNamesTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        PrepareVideos();
        m_work = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir::setCurrent(m_work->path()));
    }

    void cleanup()
    {
        FinishVideos();
        QDir::setCurrent(QDir::tempPath());
    }

    void listingAFolderForATrimWritesNothing()
    {
#ifdef Q_OS_MACOS
        QSKIP("no tool of ours on this system");
#endif
        if (QStandardPaths::findExecutable("ffmpeg").isEmpty()) {
            QSKIP("needs ffmpeg");
        }
        QFile::remove(BesideProgram("tool"));
        QVERIFY(QFile::link(QString(LUMENFOLD_BIN_DIR) + "/tool", BesideProgram("tool")));
        WriteFile(SaveDirectory() + "/a", Wav("rm important\n"));
        MakeVideo(kHostile + ".mp4");
        EnterCutPage();
        QCOMPARE(Names("m_pCutVideoTable"), QStringList{kHostile + ".mp4"});
        QCOMPARE(AllFiles(m_work->path()), QStringList());
        QCOMPARE(AllFiles(SaveDirectory()), QStringList({"a", kHostile + ".mp4"}));
    }

    void aCutNamesTwoFiles()
    {
        SelectRange(kHostile + ".mp4", 1, 3);
        ChooseHostileTarget();
        Press("Cut");
        QCOMPARE(Calls(), QStringList{"<-i><" + SaveDirectory() + '/' + kHarmless +
                                      ".mp4><-ss><1><-t><2><-codec><copy><" + Target() + '/' +
                                      kHarmless + "/Cut_" + kHarmless + ".mp4>"});
    }

    void aMergeNamesItsFiles()
    {
        const QString folder = SaveDirectory() + '/' + kHostile;
        QVERIFY(QDir().mkpath(folder));
        MakeVideo(kHostile + ".mp4", "00:00:01", folder);
        EnterMergePage();
        Child<QLineEdit>("m_pLayout4DirEdit")->setText(folder);
        Leave("m_pLayout4DirEdit");
        Add(0);
        Add(0);
        ChooseHostileTarget();
        Calls();
        Press("Merge");
        const QString target = Target() + '/' + kHarmless;
        const QStringList calls = Calls();
        QCOMPARE(calls.size(), 3);
        QCOMPARE(calls[0], "<-i><" + SaveDirectory() + '/' + kHarmless + '/' + kHarmless +
                               ".mp4><-vcodec><copy><-acodec><copy><-vbsf><h264_mp4toannexb><" +
                               target + "/1.ts>");
        const QString join = "<-i><concat:" + target + "/1.ts|" + target +
                             "/2.ts|><-acodec><copy><-vcodec><copy><-absf><aac_adtstoasc><" +
                             target + "/Merge_";
        QVERIFY2(calls[2].startsWith(join), qPrintable(calls[2]));
        QCOMPARE(calls[2].count('<'), join.count('<'));
    }

    void aFolderThatWasTypedIsAPartOfThePath()
    {
        const QString folder = SaveDirectory() + '/' + kHostile;
        QVERIFY(QDir().mkpath(folder));
        MakeVideo("b.mp4", "00:00:01", folder);
        EnterCutPage();
        Calls();
        Child<QLineEdit>("m_pLayout3DirEdit")->setText(folder);
        Leave("m_pLayout3DirEdit");
        QCOMPARE(Calls(), QStringList{"<-i><" + SaveDirectory() + '/' + kHarmless + "/b.mp4>"});
    }

    // A zero character would end the path in the tool's argument.
    void theSaveDirectoryOfTheSettingsFileIsAPartOfThePath_data()
    {
        QTest::addColumn<QString>("directory");
        QTest::addColumn<QString>("recorded");
        QTest::newRow("quotes") << '/' + kHostile << '/' + kHarmless;
        QTest::newRow("a zero character") << QString("/.profile") + QChar::Null + ".d"
                                          << "/.profile.d";
    }

    void theSaveDirectoryOfTheSettingsFileIsAPartOfThePath()
    {
        QFETCH(QString, directory);
        QFETCH(QString, recorded);
        InstallTool(kRecordingTool);
        QSettings(BesideProgram("ScreenRecord.ini"), QSettings::IniFormat)
            .setValue("/screen_record/save_path", SaveDirectory() + directory);
        QVERIFY(QDir(SaveDirectory()).mkdir(recorded.mid(1)));
        EnterRecordPage();
        Press("Record");
        QTRY_VERIFY2(ReadFile(BesideProgram("arguments")).endsWith(".mp4\n"),
                     "the tool was not started with a file of its own");
        const QString file = ToolArguments().last();
        QVERIFY2(file.startsWith(SaveDirectory() + recorded + '/'), qPrintable(file));
        QVERIFY2(QFile::exists(file), "nothing is recorded");
        QVERIFY2(!QFile::exists(SaveDirectory() + "/.profile"), "the path was cut short");
        Call("btnSlotMenuStop");
    }

private:
    void ChooseHostileTarget()
    {
        Boxes().directory = Target() + '/' + kHostile;
        QVERIFY(QDir().mkpath(Boxes().directory));
    }

    std::unique_ptr<QTemporaryDir> m_work;
};

QTEST_MAIN(HostileNamesTest)
#include "hostile_names_test.moc"
