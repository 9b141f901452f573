// Pictures of a PipeWire stream whose source does what real ones do rarely. With a PipeWire of its
// own.
#include "tests/support/own_bus.h"
#include "tests/support/small_frame.h"
#include "tool/screen/portal/cast_stream.h"
#include "tool/screen/screen_picture.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <spa/param/video/raw.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <vector>

using namespace tool;

namespace {

Descriptor ConnectTo(const QString& path)
{
    Descriptor connection(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    qstrncpy(address.sun_path, qPrintable(path), sizeof address.sun_path);
    if (connect(connection.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) !=
        0) {
        connection.Close();
    }
    return connection;
}

} // namespace

class CastStreamTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_folder.isValid());
        qputenv("XDG_RUNTIME_DIR", m_folder.path().toUtf8());
        qputenv("HOME", m_folder.path().toUtf8());
        for (const char* name : {"XDG_CONFIG_HOME", "XDG_STATE_HOME", "PIPEWIRE_REMOTE"}) {
            qunsetenv(name);
        }
        m_pipewire.start("pipewire", QStringList());
        QTRY_VERIFY2(ConnectTo(Socket()).IsOpen(), "PipeWire does not start");
        QVERIFY2(m_bus.Start(m_folder.path()), "dbus-daemon does not start");
        m_manager.start("wireplumber", QStringList());
        QVERIFY2(m_manager.waitForStarted(), "WirePlumber does not start");
    }

    void cleanup()
    {
        m_stream.reset();
        m_source.closeWriteChannel();
        m_source.waitForFinished();
    }

    void cleanupTestCase()
    {
        for (QProcess* process : {&m_manager, &m_pipewire}) {
            process->terminate();
            process->waitForFinished();
        }
    }

    void coloursOfEachFormatAreRight_data()
    {
        QTest::addColumn<int>("format");
        QTest::addColumn<QByteArray>("red");
        QTest::newRow("BGRx") << int{SPA_VIDEO_FORMAT_BGRx} << QByteArray("fill 0 0 255");
        QTest::newRow("BGRA") << int{SPA_VIDEO_FORMAT_BGRA} << QByteArray("fill 0 0 255");
        QTest::newRow("RGBx") << int{SPA_VIDEO_FORMAT_RGBx} << QByteArray("fill 255 0 0");
        QTest::newRow("RGBA") << int{SPA_VIDEO_FORMAT_RGBA} << QByteArray("fill 255 0 0");
        // Ten bits of each colour, the first from the lowest bit on.
        QTest::newRow("xBGR_210LE")
            << int{SPA_VIDEO_FORMAT_xBGR_210LE} << QByteArray("fill 255 3 0");
    }

    void coloursOfEachFormatAreRight()
    {
        QFETCH(int, format);
        QFETCH(QByteArray, red);
        Open(format);
        Command(red);
        QTRY_VERIFY2(Shows(kRed, kRed), qPrintable(Seen()));
    }

    void formatThatIsNotOfferedIsNotAgreed()
    {
        Open(SPA_VIDEO_FORMAT_NV12);
        Command("fill 0 0 255");
        // Streams are linked one after another: when a later one shows something, this one has been
        // refused.
        QProcess laterSource;
        const auto later = OpenStream(laterSource, SPA_VIDEO_FORMAT_BGRx);
        const auto shows = [&later] {
            later->Work();
            return later->Picture().has_value();
        };
        QTRY_VERIFY2(later && shows(), "no picture of another source");
        laterSource.closeWriteChannel();
        laterSource.waitForFinished();
        Work();
        QVERIFY(!m_stream->Format() && !m_stream->Picture());
    }

    void newestPictureIsShown()
    {
        Open(SPA_VIDEO_FORMAT_BGRx);
        const std::vector<std::pair<QByteArray, Yuv>> colours{
            {"fill 0 0 255", kRed}, {"fill 0 255 0", kGreen}, {"fill 255 0 0", kBlue}};
        for (const auto& [command, colour] : colours) {
            Command(command);
            QTRY_VERIFY2(Shows(colour, colour), qPrintable(Seen()));
        }
    }

    void damagedPicturesArePassedOver()
    {
        Open(SPA_VIDEO_FORMAT_BGRx);
        Command("fill 0 0 255");
        QTRY_VERIFY2(Shows(kRed, kRed), qPrintable(Seen()));
        Command("bad 1");
        Command("fill 0 255 0");
        AwaitPictures();
        QVERIFY2(Shows(kRed, kRed), "a damaged picture is shown");
        Command("bad 0");
        QTRY_VERIFY2(Shows(kGreen, kGreen), qPrintable(Seen()));
    }

    void partThatIsVisibleIsShown()
    {
        Open(SPA_VIDEO_FORMAT_BGRx);
        Command("fill 0 0 255");
        Command("half 0 255 0");
        QTRY_VERIFY2(Shows(kRed, kGreen), qPrintable(Seen()));
        Command("crop 0 24 64 24");
        QTRY_VERIFY2(Shows(kGreen, kGreen), qPrintable(Seen()));
        QCOMPARE(m_stream->Picture()->height, 24);
    }

    void turnedPicturesAreKnown()
    {
        Open(SPA_VIDEO_FORMAT_BGRx);
        Command("fill 0 0 255");
        Command("half 0 255 0");
        Command("turn 2"); // upside down
        QTRY_VERIFY2(Shows(kGreen, kRed), qPrintable(Seen()));
    }

    void changeOfTheSizeIsFollowed()
    {
        Open(SPA_VIDEO_FORMAT_BGRx);
        Command("fill 0 0 255");
        QTRY_VERIFY2(Shows(kRed, kRed), qPrintable(Seen()));
        for (const auto& [width, height] : {std::pair(128, 96), std::pair(32, 20)}) {
            Command(QString("size %1 %2").arg(width).arg(height).toLatin1());
            QTRY_VERIFY2(Work() && m_stream->Picture() && m_stream->Picture()->width == width &&
                             m_stream->Picture()->height == height,
                         "the new size is not seen");
            QVERIFY2(Shows(kRed, kRed), qPrintable(Seen()));
            QVERIFY(!m_stream->IsLost());
        }
    }

    void stillScreenKeepsItsPicture()
    {
        Open(SPA_VIDEO_FORMAT_BGRx);
        Command("fill 0 0 255");
        QTRY_VERIFY2(Shows(kRed, kRed), qPrintable(Seen()));
        Command("rest 1");
        AwaitPictures(); // what is on its way
        const uint64_t count = m_stream->Count();
        AwaitPictures();
        QVERIFY2(Shows(kRed, kRed), qPrintable(Seen()));
        QCOMPARE(m_stream->Count(), count);
    }

    void sourceThatEndsEndsTheStream()
    {
        Open(SPA_VIDEO_FORMAT_BGRx);
        QTRY_VERIFY2(Work() && m_stream->Picture(), "no picture");
        m_source.kill();
        QTRY_VERIFY2(Work() && m_stream->IsLost(), "the end is not noticed");
        QVERIFY2(!m_stream->Picture(), "a picture in memory that is gone");
    }

    void connectionThatEndsEndsTheStream()
    {
        Open(SPA_VIDEO_FORMAT_BGRx);
        QTRY_VERIFY2(Work() && m_stream->Picture(), "no picture");
        const int connection = m_nConnection;
        shutdown(connection, SHUT_RDWR);
        QTRY_VERIFY2(Work() && m_stream->IsLost(), "the end is not noticed");
    }

    void connectionToNothingIsNoStream()
    {
        int ends[2];
        QCOMPARE(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
        close(ends[1]);
        m_stream = CastStream::Open(Descriptor(ends[0]), 1);
        QTRY_VERIFY2(!m_stream || (Work() && m_stream->IsLost()), "it waits for ever");
    }

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    QString Socket() const { return m_folder.filePath("pipewire-0"); }

    // Starts a source of pictures in this format. Returns null on failure.
    std::unique_ptr<CastStream> OpenStream(QProcess& source, int format)
    {
        source.start(CAST_SOURCE,
                     {QString::number(format), QString::number(kWidth), QString::number(kHeight)});
        if (!source.waitForReadyRead(10000)) {
            return nullptr;
        }
        const auto node = source.readAll().mid(5).trimmed().toUInt();
        Descriptor connection = ConnectTo(Socket());
        m_nConnection = connection.Number();
        return CastStream::Open(std::move(connection), node);
    }
    void Open(int format)
    {
        m_stream = OpenStream(m_source, format);
        QVERIFY2(m_stream, "no stream");
    }
    void Command(const QByteArray& command)
    {
        m_source.write(command + '\n');
        m_source.waitForBytesWritten();
    }
    // Waits until the source has been asked for some more pictures.
    void AwaitPictures()
    {
        Command("tell 5");
        QByteArray told;
        QTRY_VERIFY2(Work() && (told += m_source.readAll()).contains("told"), "no pictures");
        Work();
    }
    bool Work()
    {
        m_stream->Work();
        return true;
    }

    std::vector<uint8_t> Frame()
    {
        m_stream->Work();
        std::vector<uint8_t> frame(YuvBytes(kWidth, kHeight));
        if (m_stream->Picture()) {
            FrameFitter().Write(*m_stream->Picture(), frame.data(), kWidth, kHeight);
        }
        return frame;
    }
    // Whether the frame has these colours above and below its middle.
    bool Shows(const Yuv& upper, const Yuv& lower)
    {
        const auto frame = Frame();
        return m_stream->Picture() && ColourAt(kHeight / 4 + 4, frame).IsLike(upper) &&
               ColourAt(kHeight * 3 / 4 - 4, frame).IsLike(lower);
    }
    QString Seen()
    {
        const Yuv seen = ColourAt(kHeight / 4 + 4, Frame());
        return QString("seen: %1 %2 %3, lost %4")
            .arg(seen.y)
            .arg(seen.u)
            .arg(seen.v)
            .arg(m_stream->IsLost());
    }

    QTemporaryDir m_folder;
    OwnBus m_bus; // WirePlumber does not start without one
    QProcess m_pipewire;
    QProcess m_manager;
    QProcess m_source;
    int m_nConnection = -1;
    std::unique_ptr<CastStream> m_stream;
};

QTEST_GUILESS_MAIN(CastStreamTest)
#include "cast_stream_test.moc"
