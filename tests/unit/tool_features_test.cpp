// Which options an ffmpeg has, told by its libraries' versions.
#include "tool/ffmpeg/features.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace {

const char* const debian12 = "ffmpeg version 5.1.6-0+deb12u1 Copyright (c) 2000-2024 the FFmpeg\n"
                             "built with gcc 12 (Debian 12.2.0-14)\n"
                             "libavutil      57. 28.100 / 57. 28.100\n"
                             "libavcodec     59. 37.100 / 59. 37.100\n"
                             "libavformat    59. 27.100 / 59. 27.100\n";

} // namespace

class ToolFeaturesTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void versionIsReadFromTheText();
    void textWithoutVersionsIsRefused_data();
    void textWithoutVersionsIsRefused();
    void optionsComeWithTheirVersions_data();
    void optionsComeWithTheirVersions();
    void wrapperScriptIsAskedLikeAnyProgram();
    void answerIsRemembered();
    void changedProgramIsAskedAgain();
    void programThatDoesNotAnswerHasNoFeatures_data();
    void programThatDoesNotAnswerHasNoFeatures();
    void damagedMemoryIsIgnored();

private:
    std::string Path(const char* name) const { return m_folder->filePath(name).toStdString(); }
    // Writes a program that runs these shell commands, and notes each run in the file "runs".
    void WriteProgram(const QByteArray& commands);
    qsizetype Runs() const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void ToolFeaturesTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_folder->path()));
}

void ToolFeaturesTest::WriteProgram(const QByteArray& commands)
{
    QFile script(m_folder->filePath("ffmpeg"));
    QVERIFY(script.open(QIODevice::WriteOnly));
    script.write("#!/bin/sh\necho run >> \"" + QFile::encodeName(m_folder->filePath("runs")) +
                 "\"\n" + commands + "\n");
    script.close();
    QVERIFY(script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

qsizetype ToolFeaturesTest::Runs() const
{
    QFile file(m_folder->filePath("runs"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().count('\n') : 0;
}

void ToolFeaturesTest::versionIsReadFromTheText()
{
    const auto version = tool::ParseVersion(debian12);
    QVERIFY(version);
    QCOMPARE(version->codec.major, 59);
    QCOMPARE(version->codec.minor, 37);
    QCOMPARE(version->format.major, 59);
    QCOMPARE(version->format.minor, 27);
}

void ToolFeaturesTest::textWithoutVersionsIsRefused_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("one library") << QByteArray("x\nlibavcodec     59. 37.100 /\n");
    QTest::newRow("no number") << QByteArray("x\nlibavcodec     n. 1\nlibavformat    59. 27.1\n");
    QTest::newRow("cut off") << QByteArray("x\nlibavformat    59. 27.100\nlibavcodec     59.");
    QTest::newRow("too large") << QByteArray("x\nlibavformat 59. 27\nlibavcodec 99999999999. 1\n");
    QTest::newRow("negative") << QByteArray("x\nlibavformat 59. 27\nlibavcodec -59. 1\n");
}

void ToolFeaturesTest::textWithoutVersionsIsRefused()
{
    QFETCH(QByteArray, text);
    QVERIFY(!tool::ParseVersion(text.toStdString()));
}

void ToolFeaturesTest::optionsComeWithTheirVersions_data()
{
    QTest::addColumn<tool::FfmpegVersion>("version");
    QTest::addColumn<bool>("statsPeriod");
    QTest::addColumn<bool>("noiseDrop");
    using tool::FfmpegVersion;
    QTest::newRow("4.3") << FfmpegVersion{{58, 91}, {58, 45}} << false << false;
    QTest::newRow("4.4") << FfmpegVersion{{58, 134}, {58, 76}} << true << false;
    QTest::newRow("5.0") << FfmpegVersion{{59, 18}, {59, 16}} << true << false;
    QTest::newRow("5.1") << FfmpegVersion{{59, 37}, {59, 27}} << true << true;
    QTest::newRow("7.1") << FfmpegVersion{{61, 19}, {61, 7}} << true << true;
}

void ToolFeaturesTest::optionsComeWithTheirVersions()
{
    QFETCH(tool::FfmpegVersion, version);
    QTEST(tool::FeaturesOf(version).statsPeriod, "statsPeriod");
    QTEST(tool::FeaturesOf(version).noiseDrop, "noiseDrop");
}

void ToolFeaturesTest::wrapperScriptIsAskedLikeAnyProgram()
{
    WriteProgram("[ \"$1\" = -version ] && cat << EOF\n" + QByteArray(debian12) + "EOF");
    QVERIFY(tool::FeaturesOf(Path("ffmpeg")).statsPeriod);
}

void ToolFeaturesTest::answerIsRemembered()
{
    WriteProgram("cat << EOF\n" + QByteArray(debian12) + "EOF");
    QVERIFY(tool::FeaturesOf(Path("ffmpeg")).noiseDrop);
    QVERIFY(tool::FeaturesOf(Path("ffmpeg")).noiseDrop);
    QCOMPARE(Runs(), 1);
}

void ToolFeaturesTest::changedProgramIsAskedAgain()
{
    WriteProgram("cat << EOF\n" + QByteArray(debian12) + "EOF");
    QVERIFY(tool::FeaturesOf(Path("ffmpeg")).statsPeriod);
    WriteProgram("cat << EOF\n" + QByteArray(debian12).replace(" 59. 27", " 58. 45") + "\nEOF");
    QVERIFY(!tool::FeaturesOf(Path("ffmpeg")).statsPeriod);
    QCOMPARE(Runs(), 2);
}

void ToolFeaturesTest::programThatDoesNotAnswerHasNoFeatures_data()
{
    QTest::addColumn<QByteArray>("commands");
    QTest::newRow("silent") << QByteArray("exit 0");
    QTest::newRow("talks without end") << QByteArray("while :; do echo libavcodec; done");
    QTest::newRow("hangs") << QByteArray("exec sleep 1000");
    QTest::newRow("speaks of something else") << QByteArray("echo hello");
}

void ToolFeaturesTest::programThatDoesNotAnswerHasNoFeatures()
{
    QFETCH(QByteArray, commands);
    WriteProgram(commands);
    QVERIFY(!tool::FeaturesOf(Path("ffmpeg")).statsPeriod);
    QVERIFY(!tool::FeaturesOf(Path("missing")).statsPeriod);
    QVERIFY2(!QFile::exists(m_folder->filePath("lumenfold-recorder/ffmpeg")),
             "what is no version was remembered");
}

void ToolFeaturesTest::damagedMemoryIsIgnored()
{
    WriteProgram("cat << EOF\n" + QByteArray(debian12) + "EOF");
    QVERIFY(tool::FeaturesOf(Path("ffmpeg")).statsPeriod);
    const QString memory = m_folder->filePath("lumenfold-recorder/ffmpeg");
    QFile file(memory);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.resize(20));
    QVERIFY(tool::FeaturesOf(Path("ffmpeg")).statsPeriod);
    QCOMPARE(Runs(), 2);
}

QTEST_APPLESS_MAIN(ToolFeaturesTest)
#include "tool_features_test.moc"
