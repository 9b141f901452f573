#include "jobs/text_codec.h"

#include <QTest>

class TextCodecTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { InstallTextCodec("GB2312"); }

    void eightBitTextIsReadAsGb2312()
    {
        QCOMPARE(FromEightBit(QByteArray("a\xd6\xd0\xce\xc4")), QString::fromUtf8("a\u4e2d\u6587"));
        QCOMPARE(FromEightBit(std::string("1.50 KB")), QString("1.50 KB"));
    }

    // Only ASCII needs no codec, and 0x80 is not ASCII.
    void theFirstByteBeyondAsciiGoesThroughTheCodec()
    {
        InstallTextCodec("windows-1252");
        QCOMPARE(FromEightBit(QByteArray("\x80")), QString::fromUtf8("\u20ac"));
        QCOMPARE(FromEightBit(QByteArray("\x7f")), QString(QChar(0x7f)));
    }

    void textIsWrittenAsGb2312()
    {
        QCOMPARE(ToEightBit(QString::fromUtf8("/\u4e2d\u6587")), QByteArray("/\xd6\xd0\xce\xc4"));
    }

    void aSecondInstallationOfTheSameNameChangesNothing()
    {
        InstallTextCodec("GB2312");
        eightBitTextIsReadAsGb2312();
    }

    void anUnknownNameKeepsTheCodec()
    {
        InstallTextCodec("no such codec");
        eightBitTextIsReadAsGb2312();
    }

    // The previous name need not have been used yet.
    void anUnknownNameKeepsACodecNotUsedYet()
    {
        InstallTextCodec("windows-1252");
        InstallTextCodec("no such codec");
        QCOMPARE(FromEightBit(QByteArray("\xe9")), QString::fromUtf8("\u00e9"));
    }
};

QTEST_GUILESS_MAIN(TextCodecTest)
#include "text_codec_test.moc"
