#include "tool/feed/picture_pipe.h"
#include "tool/system/pipe.h"

#include <QTest>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <thread>
#include <unistd.h>
#include <utility>

using namespace std::chrono_literals;
using tool::PicturePipe;
using Clock = std::chrono::steady_clock;

class ToolPicturePipeTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void slowReaderGetsEveryPictureWhole_data();
    void slowReaderGetsEveryPictureWhole();
    void repeatedPictureComesAsOftenAsAsked();
    void picturesThatNobodyReadsTakeNoMemoryForEver();
    void pictureThatWasReadGivesItsMemoryToTheNext();
    void endOfTheReaderIsTold();

private:
    QByteArray Read(size_t bytes);
    static void Show(PicturePipe& pictures, size_t bytes, int number);

    tool::Descriptor m_read;
    tool::Descriptor m_write;
};

void ToolPicturePipeTest::init()
{
    std::signal(SIGPIPE, SIG_IGN);
    auto pipe = tool::MakePipe();
    QVERIFY(pipe.has_value());
    m_read = std::move(pipe->read);
    m_write = std::move(pipe->write);
}

QByteArray ToolPicturePipeTest::Read(size_t bytes)
{
    QByteArray all;
    while (static_cast<size_t>(all.size()) < bytes) {
        QByteArray piece(static_cast<qsizetype>(bytes) - all.size(), '\0');
        const ssize_t count =
            read(m_read.Number(), piece.data(), static_cast<size_t>(piece.size()));
        if (count <= 0) {
            break;
        }
        all += piece.left(count);
    }
    return all;
}

void ToolPicturePipeTest::Show(PicturePipe& pictures, size_t bytes, int number)
{
    uint8_t* picture = pictures.Blank();
    QVERIFY(picture != nullptr);
    std::memset(picture, number, bytes);
    pictures.Add();
}

void ToolPicturePipeTest::slowReaderGetsEveryPictureWhole_data()
{
    QTest::addColumn<int>("bytes");
    QTest::newRow("larger than the pipe") << 1920 * 1080 * 3 / 2;
    QTest::newRow("about as large") << (1 << 20);
    QTest::newRow("no whole page") << 333 * 1000 + 7;
    QTest::newRow("smaller than a page") << 600;
}

// The pipe holds the pages the frames were drawn in, so none may be reused too early.
void ToolPicturePipeTest::slowReaderGetsEveryPictureWhole()
{
    QFETCH(int, bytes);
    const auto size = static_cast<size_t>(bytes);
    constexpr int count = 60;
    PicturePipe pictures(std::move(m_write), size);
    bool good = true;
    std::thread writer([&] {
        for (int number = 1; number <= count && good; ++number) {
            uint8_t* picture = nullptr;
            while (good && (picture = pictures.Blank()) == nullptr) {
                good = pictures.Work(Clock::now() + 1ms);
            }
            if (picture != nullptr) {
                std::memset(picture, number, size);
                pictures.Add();
            }
        }
        while (good && pictures.HasWork()) {
            good = pictures.Work(Clock::now() + 1ms);
        }
    });
    int whole = 0;
    for (int number = 1; number <= count; ++number) {
        whole += Read(size) == QByteArray(bytes, static_cast<char>(number)) ? 1 : 0;
    }
    writer.join();
    QVERIFY(good);
    QCOMPARE(whole, count);
}

void ToolPicturePipeTest::repeatedPictureComesAsOftenAsAsked()
{
    constexpr size_t bytes = 100;
    PicturePipe pictures(std::move(m_write), bytes);
    Show(pictures, bytes, 1);
    pictures.Repeat(2);
    QVERIFY(pictures.Work(Clock::now()));
    QVERIFY(!pictures.HasWork());
    QCOMPARE(Read(3 * bytes), QByteArray(3 * bytes, '\1'));
    pictures.Repeat(1); // the frame was read long ago
    Show(pictures, bytes, 2);
    QVERIFY(pictures.Work(Clock::now()));
    QCOMPARE(Read(2 * bytes), QByteArray(bytes, '\1') + QByteArray(bytes, '\2'));
}

void ToolPicturePipeTest::picturesThatNobodyReadsTakeNoMemoryForEver()
{
    constexpr size_t bytes = 1 << 20;
    PicturePipe pictures(std::move(m_write), bytes);
    int kept = 0;
    while (uint8_t* picture = pictures.Blank()) {
        std::memset(picture, 1, bytes);
        pictures.Add();
        QVERIFY(pictures.Work(Clock::now()));
        QVERIFY2(++kept < 20, "more than 20 MiB");
    }
    QVERIFY2(kept >= 5, qPrintable(QString("a stall of %1 pictures loses some").arg(kept)));
}

void ToolPicturePipeTest::pictureThatWasReadGivesItsMemoryToTheNext()
{
    constexpr size_t bytes = 4096;
    PicturePipe pictures(std::move(m_write), bytes);
    Show(pictures, bytes, 1);
    QVERIFY(pictures.Work(Clock::now()));
    uint8_t* second = pictures.Blank();
    std::memset(second, 2, bytes);
    pictures.Add();
    QVERIFY(pictures.Work(Clock::now()));
    QCOMPARE(Read(bytes), QByteArray(bytes, '\1'));
    const uint8_t* third = pictures.Blank();
    QVERIFY2(third != second, "the memory of a frame that is still to be read is used again");
    QCOMPARE(Read(bytes), QByteArray(bytes, '\2'));
    const uint8_t* first = pictures.Blank();
    pictures.Add();
    QVERIFY(pictures.Work(Clock::now()));
    Read(bytes);
    QVERIFY2(pictures.Blank() == first, "more memory than one frame's is used");
}

void ToolPicturePipeTest::endOfTheReaderIsTold()
{
    PicturePipe pictures(std::move(m_write), 100);
    QVERIFY(pictures.Work(Clock::now()));
    m_read.Close();
    QVERIFY(!pictures.Work(Clock::now() + 10s));
}

QTEST_GUILESS_MAIN(ToolPicturePipeTest)
#include "tool_picture_pipe_test.moc"
