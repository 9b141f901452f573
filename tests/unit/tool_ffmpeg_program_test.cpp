#include "tool/ffmpeg/ffmpeg_program.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using Places = std::vector<std::string>;

class ToolFfmpegProgramTest : public QObject
{
    Q_OBJECT

private slots:
    void chosenProgramIsTheOnlyPlace();
    void ownDirectoryComesBeforePath();
    void onMacOsOwnProgramComesFirstAndHomebrewLast();
    void placesInTheWorkingDirectoryAreLeftOut();
    void whatCannotBeRunIsPassedOver();
};

void ToolFfmpegProgramTest::chosenProgramIsTheOnlyPlace()
{
    QVERIFY(tool::FfmpegPlaces("/x/ff", "/own", "/bin") == Places{"/x/ff"});
}

void ToolFfmpegProgramTest::ownDirectoryComesBeforePath()
{
    QVERIFY(tool::FfmpegPlaces("", "/own", "/a:/b") ==
            Places({"/own/ffmpeg", "/a/ffmpeg", "/b/ffmpeg"}));
    QVERIFY(tool::FfmpegPlaces("", "/own", "") == Places{"/own/ffmpeg"});
}

void ToolFfmpegProgramTest::onMacOsOwnProgramComesFirstAndHomebrewLast()
{
    const tool::SearchOrder order = {true, {"/opt/homebrew/bin", "/usr/local/bin"}};
    QVERIFY(
        tool::FfmpegPlaces("", "/own", "/a", order) ==
        Places({"/own/ffmpeg", "/a/ffmpeg", "/opt/homebrew/bin/ffmpeg", "/usr/local/bin/ffmpeg"}));
    QVERIFY(tool::FfmpegPlaces("/x/ff", "/own", "/a", order) == Places({"/own/ffmpeg", "/x/ff"}));
    QVERIFY(tool::FfmpegPlaces("ff", "/own", "/a", order) == Places{"/own/ffmpeg"});
}

void ToolFfmpegProgramTest::placesInTheWorkingDirectoryAreLeftOut()
{
    QVERIFY(tool::FfmpegPlaces("", "/own", "/a::/b:") ==
            Places({"/own/ffmpeg", "/a/ffmpeg", "/b/ffmpeg"}));
    QVERIFY(tool::FfmpegPlaces("", "/own", ":bin:.:./bin:/a:..") ==
            Places({"/own/ffmpeg", "/a/ffmpeg"}));
    for (const char* chosen : {"ffmpeg", "./ffmpeg", "bin/ffmpeg"}) {
        QVERIFY(tool::FfmpegPlaces(chosen, "/own", "/a").empty());
    }
}

void ToolFfmpegProgramTest::whatCannotBeRunIsPassedOver()
{
    QTemporaryDir folder;
    const auto place = [&](const char* name) { return folder.filePath(name).toStdString(); };
    QFile plain(folder.filePath("plain"));
    QVERIFY(plain.open(QIODevice::WriteOnly));
    QFile program(folder.filePath("program"));
    QVERIFY(program.open(QIODevice::WriteOnly));
    QVERIFY(program.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    QCOMPARE(tool::FirstRunnable(
                 {place("missing"), folder.path().toStdString(), place("plain"), place("program")}),
             place("program"));
    QCOMPARE(tool::FirstRunnable({place("plain")}), std::string());
}

QTEST_APPLESS_MAIN(ToolFfmpegProgramTest)
#include "tool_ffmpeg_program_test.moc"
