// Headers that are damaged, odd or far away cost little and give no wrong duration.
#include "tests/support/movie_test.h"
#include "tool/mp4/frugal_file.h"
#include "tool/mp4/movie.h"

#include <QFile>

#include <random>
#include <sys/stat.h>

class ToolProbeDamageTest : public MovieTest
{
    Q_OBJECT

private slots:
    void initTestCase();
    void oddBoxSizesAreLeftToFfmpeg_data();
    void oddBoxSizesAreLeftToFfmpeg();
    void thousandBoxesInEachOtherAreHarmless();
    void headerAtTheEndOfTenGigabytesIsFound();
    void noDamageReadsMuchOrCrashes();
    void pipesAreNotWaitedFor();
};

void ToolProbeDamageTest::initTestCase()
{
    const QStringList both = PictureInput(1.5) + ToneInput(1.5);
    const QStringList plain = PlainCodecs();
    Make("plain.mp4", both + plain);
    Make("header first.mp4", both + plain + QStringList{"-movflags", "+faststart"});
    Make("fragmented.mp4", both + plain + QStringList{"-movflags", "frag_keyframe+empty_moov"});
    Make("late sound.mp4",
         PictureInput(2) + QStringList{"-itsoffset", "0.7"} + ToneInput(1) + plain);
    Make("ntsc.mp4", PictureInput(2, "160x120", "30000/1001") + ToneInput(2, 44100) + plain +
                         QStringList{"-bf", "3"});
    Make("cut.mp4", QStringList{"-ss", "0.9", "-i", Path("ntsc.mp4"), "-c", "copy"});
}

void ToolProbeDamageTest::oddBoxSizesAreLeftToFfmpeg_data()
{
    QTest::addColumn<QByteArray>("box");
    QTest::addColumn<QByteArray>("size");
    for (const char* box : {"ftyp", "moov", "mvhd", "trak", "mdia", "elst", "stts", "stsd"}) {
        for (const char* size :
             {"00000000", "00000001", "00000007", "7fffffff", "80000000", "ffffffff"}) {
            // A box without a size extends to the end of the file.
            if (QByteArray(box) != "moov" || QByteArray(size) != "00000000") {
                QTest::addRow("%s %s", box, size) << QByteArray(box) << QByteArray(size);
            }
        }
    }
}

void ToolProbeDamageTest::oddBoxSizesAreLeftToFfmpeg()
{
    QFETCH(QByteArray, box);
    QFETCH(QByteArray, size);
    QByteArray bytes = Bytes("header first.mp4");
    const qsizetype place = bytes.indexOf(box);
    QVERIFY(place >= 4);
    bytes.replace(place - 4, 4, QByteArray::fromHex(size));
    MakeFile("odd.mp4", bytes);
    QVERIFY(!tool::ProbeText(Path("odd.mp4").toStdString()));
    for (const char* wide : {"0000000000000000", "000000000000000f", "7fffffffffffffff",
                             "8000000000000000", "ffffffffffffffff"}) {
        QByteArray more = bytes;
        more.replace(place - 4, 4, QByteArray::fromHex("00000001"));
        more.replace(place + 4, 8, QByteArray::fromHex(wide));
        MakeFile("odd.mp4", more);
        QVERIFY2(!tool::ProbeText(Path("odd.mp4").toStdString()), wide);
    }
}

void ToolProbeDamageTest::thousandBoxesInEachOtherAreHarmless()
{
    for (const char* type : {"moov", "trak", "mdia", "stbl", "edts", "udta"}) {
        QByteArray nested;
        for (int depth = 1; depth <= 1000; ++depth) {
            QByteArray head(4, '\0');
            const int size = 8 * depth;
            head[2] = static_cast<char>(size >> 8);
            head[3] = static_cast<char>(size & 0xff);
            nested.prepend(head + type);
        }
        const QByteArray size = QByteArray::number(nested.size() + 8, 16).rightJustified(8, '0');
        MakeFile("deep.mp4",
                 Bytes("plain.mp4").left(28) + QByteArray::fromHex(size) + "moov" + nested);
        tool::FrugalFile file(Path("deep.mp4").toStdString(), tool::movieAllowance);
        QVERIFY2(!tool::ReadMovie(file), type);
        QVERIFY2(file.BytesRead() <= tool::movieAllowance, type);
    }
}

void ToolProbeDamageTest::headerAtTheEndOfTenGigabytesIsFound()
{
    const QByteArray plain = Bytes("plain.mp4");
    const qsizetype moov = plain.indexOf("moov") - 4;
    QFile file(Path("huge.mp4"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const qint64 start = plain.indexOf("mdat") - 4;
    constexpr qint64 size = 10LL * 1024 * 1024 * 1024;
    QByteArray header = QByteArray::fromHex("00000001") + "mdat";
    for (int shift = 56; shift >= 0; shift -= 8) {
        header += static_cast<char>(size >> shift & 0xff);
    }
    QVERIFY(file.write(plain.left(start) + header) > 0);
    QVERIFY(file.seek(start + size));
    QVERIFY(file.write(plain.mid(moov)) > 0);
    file.close();
    tool::FrugalFile frugal(file.fileName().toStdString(), tool::movieAllowance);
    QVERIFY(tool::ReadMovie(frugal));
    QVERIFY2(frugal.BytesRead() < 4096, qPrintable(QString::number(frugal.BytesRead())));
    const auto text = tool::ProbeText(file.fileName().toStdString());
    QVERIFY2(text, "it was left to ffmpeg");
    const QByteArray line = QByteArray::fromStdString(*text);
    QCOMPARE(line.left(23),
             DurationLine(RunProgram("ffmpeg", {"-i", Path("plain.mp4")}).error).left(23));
}

void ToolProbeDamageTest::noDamageReadsMuchOrCrashes()
{
    std::mt19937 random(20180305); // NOLINT(bugprone-random-generator-seed,cert-msc*): repeatable
    const QByteArray values = QByteArray::fromHex("0001027f80feff");
    int refused = 0;
    for (const char* name : {"ntsc.mp4", "cut.mp4", "late sound.mp4", "fragmented.mp4"}) {
        const QByteArray whole = Bytes(name);
        const qsizetype moov = whole.indexOf("moov") - 4;
        for (int round = 0; round < 1000; ++round) {
            QByteArray bytes = whole.left(32) + whole.mid(moov);
            for (auto changes = 1 + random() % 6; changes > 0; --changes) {
                const auto at =
                    static_cast<qsizetype>(random() % static_cast<size_t>(bytes.size()));
                bytes[at] = values[static_cast<qsizetype>(random() % 7)];
            }
            if (random() % 4 == 0) {
                bytes.truncate(
                    static_cast<qsizetype>(random() % static_cast<size_t>(bytes.size())));
            }
            MakeFile("damaged.mp4", bytes);
            tool::FrugalFile file(Path("damaged.mp4").toStdString(), tool::movieAllowance);
            refused += tool::ReadMovie(file) ? 0 : 1;
            QVERIFY(file.BytesRead() <= tool::movieAllowance);
            tool::ProbeText(Path("damaged.mp4").toStdString());
        }
    }
    QVERIFY2(refused > 400, qPrintable(QString::number(refused)));
}

void ToolProbeDamageTest::pipesAreNotWaitedFor()
{
    const QByteArray path = Path("pipe.mp4").toUtf8();
    QCOMPARE(mkfifo(path.constData(), S_IRUSR | S_IWUSR), 0);
    QVERIFY(!tool::ProbeText(path.toStdString()));
}

QTEST_GUILESS_MAIN(ToolProbeDamageTest)
#include "tool_probe_damage_test.moc"
