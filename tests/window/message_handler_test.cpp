#include "app/message_handler.h"
#include "jobs/text_codec.h"
#include "tests/window/fake_tool.h"

#include <QTemporaryDir>

class MessageHandlerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_directory = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir::setCurrent(m_directory->path()));
        InstallTextCodec("GB2312");
    }
    void cleanup() { QDir::setCurrent(QDir::tempPath()); }

    void debugMessagesAreAppendedLineByLine()
    {
        customMessageHandler(QtDebugMsg, "first");
        customMessageHandler(QtDebugMsg, "second %1");
        QCOMPARE(ReadFile("Log.txt"), QByteArray("Debug: first\nDebug: second %1\n"));
    }

    void theTextIsReadThroughTheCodecForEightBitStrings()
    {
        customMessageHandler(QtDebugMsg, "\xd6\xd0");
        QCOMPARE(QString::fromUtf8(ReadFile("Log.txt")), QString::fromUtf8("Debug: \u4e2d\n"));
    }

    void everyOtherKindIsDropped()
    {
        for (const QtMsgType type : {QtInfoMsg, QtWarningMsg, QtCriticalMsg, QtFatalMsg}) {
            customMessageHandler(type, "lost");
        }
        QVERIFY(!QFile::exists("Log.txt"));
    }

    void aLogThatCannotBeOpenedLosesTheLineOnly()
    {
        QVERIFY(QDir().mkdir("Log.txt"));
        customMessageHandler(QtDebugMsg, "lost");
        QVERIFY(QFileInfo("Log.txt").isDir());
    }

private:
    std::unique_ptr<QTemporaryDir> m_directory;
};

QTEST_GUILESS_MAIN(MessageHandlerTest)
#include "message_handler_test.moc"
