#include "tool/ffmpeg_program.h"

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
    void whatCannotBeRunIsPassedOver();
    void optionIsFoundInTheProgramFile_data();
    void optionIsFoundInTheProgramFile();
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
    QVERIFY(tool::FfmpegPlaces("", "", "/a::/b") == Places({"/a/ffmpeg", "./ffmpeg", "/b/ffmpeg"}));
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

void ToolFfmpegProgramTest::optionIsFoundInTheProgramFile_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("known");
    QTest::newRow("in the table") << QByteArray("\x7f"
                                                "ELF\0vstats\0stats_period\0set",
                                                31)
                                  << true;
    QTest::newRow("only as a part") << QByteArray("\x7f"
                                                  "ELF\0no_stats_period\0",
                                                  21)
                                    << false;
    QTest::newRow("only a beginning") << QByteArray("\x7f"
                                                    "ELF\0stats_periods\0",
                                                    19)
                                      << false;
    QTest::newRow("a script") << QByteArray("#!/bin/sh\n\0stats_period\0", 24) << false;
    QTest::newRow("empty") << QByteArray() << false;
}

void ToolFfmpegProgramTest::optionIsFoundInTheProgramFile()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, known);
    QTemporaryDir folder;
    QFile file(folder.filePath("program"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    QCOMPARE(tool::KnowsOption(file.fileName().toStdString(), "stats_period"), known);
    QVERIFY(!tool::KnowsOption(folder.filePath("missing").toStdString(), "stats_period"));
}

QTEST_APPLESS_MAIN(ToolFfmpegProgramTest)
#include "tool_ffmpeg_program_test.moc"
