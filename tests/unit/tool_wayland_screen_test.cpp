// Outputs and pictures of a compositor that does what real ones do rarely.
#include "tests/support/fake_compositor.h"
#include "tool/screen/screen_picture.h"
#include "tool/screen/wayland/wayland_screens.h"

#include <QElapsedTimer>
#include <QTest>

#include <algorithm>
#include <cstring>
#include <optional>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

using namespace std::chrono_literals;
using Answer = FakeCompositor::Answer;
using Clock = std::chrono::steady_clock;
using tool::Rectangle;
using Outcome = tool::Screen::Outcome;

namespace {

constexpr Rectangle kArea{0, 0, 64, 48};
constexpr int kWhite = 235; // as luma
constexpr int kBlack = 16;
constexpr uint32_t kWhitePixel = 0xffffffff;
constexpr uint32_t kArgb8888 = 0;
constexpr uint32_t kXrgb8888 = 1;

// A screen, and the last frame of it.
class Pictures
{
public:
    explicit Pictures(const RunningCompositor& compositor, const Rectangle& area = kArea)
        : m_opened(tool::OpenWaylandScreen(compositor.Name(), area)),
          m_frame(tool::YuvBytes(area.width, area.height) + kBehind, kUntouched),
          m_area(area)
    {
    }

    bool IsOpen() const { return m_opened && m_opened->screen; }
    const std::optional<tool::OpenedScreen>& Opened() const { return m_opened; }
    Outcome Next(std::chrono::milliseconds patience = 5s)
    {
        const Outcome outcome = m_opened->screen->Next(Clock::now() + patience);
        if (outcome == Outcome::Taken) {
            m_opened->screen->Write(m_frame.data());
        }
        return outcome;
    }
    std::string LostReason() const { return m_opened->screen->LostReason(); }
    int At(int x, int y) const { return m_frame[static_cast<size_t>(y * m_area.width + x)]; }
    bool KeepsItsBounds() const
    {
        return std::all_of(m_frame.end() - kBehind, m_frame.end(),
                           [](uint8_t byte) { return byte == kUntouched; });
    }

private:
    static constexpr int kBehind = 64;
    static constexpr uint8_t kUntouched = 0x5a;
    std::optional<tool::OpenedScreen> m_opened;
    std::vector<uint8_t> m_frame;
    Rectangle m_area;
};

// A socket that nobody reads from.
class DeafSocket
{
public:
    DeafSocket() : m_nSocket(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        m_address.sun_family = AF_UNIX;
        std::strncpy(m_address.sun_path, Name().c_str(), sizeof m_address.sun_path - 1);
        m_bGood = bind(m_nSocket, Address(), sizeof m_address) == 0 && listen(m_nSocket, 0) == 0;
    }
    DeafSocket(const DeafSocket&) = delete;
    DeafSocket& operator=(const DeafSocket&) = delete;
    ~DeafSocket()
    {
        close(m_nSocket);
        for (const int client : m_clients) {
            close(client);
        }
    }

    bool IsGood() const { return m_bGood; }
    std::string Name() const { return m_folder.filePath("wayland").toStdString(); }
    // Nobody can connect any more.
    void Fill()
    {
        for (int client = 0; client >= 0;) {
            client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
            m_clients.push_back(client);
            if (connect(client, Address(), sizeof m_address) != 0) {
                return;
            }
        }
    }

private:
    const sockaddr* Address() const { return reinterpret_cast<const sockaddr*>(&m_address); }

    QTemporaryDir m_folder;
    sockaddr_un m_address{};
    int m_nSocket;
    bool m_bGood = false;
    std::vector<int> m_clients;
};

FakeCompositor With(const std::vector<FakeOutput>& outputs, bool tellsPlaces = true)
{
    FakeCompositor behaviour;
    behaviour.outputs = outputs;
    behaviour.tellsPlaces = tellsPlaces;
    return behaviour;
}

FakeCompositor With(const std::vector<Answer>& answers)
{
    FakeCompositor behaviour;
    behaviour.answers = answers;
    behaviour.pixel = kWhitePixel;
    return behaviour;
}

} // namespace

class WaylandScreenTest : public QObject
{
    Q_OBJECT

private slots:
    static void outputsAreListedByTheirPlaces_data();
    static void outputsAreListedByTheirPlaces();
    static void turnedOutputIsListedUpright();
    static void outputsOfNoUseAreNotListed();
    static void compositorWithoutOutputsSaysSo();
    static void compositorThatDoesNotAnswerIsNotWaitedFor_data();
    static void compositorThatDoesNotAnswerIsNotWaitedFor();
    static void compositorWithoutScreencopyIsLeftToOthers();
    static void everyFormatHasItsColours_data();
    static void everyFormatHasItsColours();
    static void pictureFromBelowIsUpright();
    static void olderCompositorsDeliverPictures_data();
    static void olderCompositorsDeliverPictures();
    static void layoutThatCannotBeIsRefused_data();
    static void layoutThatCannotBeIsRefused();
    static void layoutThatBecomesImpossibleLeavesTheLastPicture();
    static void pictureThatChangesItsSizeFillsTheSameFrame();
    static void failedFramesAreAskedForAgain();
    static void strangeOrderOfEventsIsSurvived_data();
    static void strangeOrderOfEventsIsSurvived();
    static void stillScreenIsAskedForOnce();
    static void changeOfAStillScreenIsThereAtTheNextLook();
    static void compositorThatFallsSilentLeavesTheLastPicture();
    static void compositorThatGoesIsLost_data();
    static void compositorThatGoesIsLost();
    static void outputThatGoesIsLost();
    static void screenThatWasChangedSinceTheListIsNotRecorded();
};

void WaylandScreenTest::outputsAreListedByTheirPlaces_data()
{
    QTest::addColumn<bool>("tellsPlaces");
    QTest::newRow("xdg-output") << true;
    QTest::newRow("wl_output") << false;
}

void WaylandScreenTest::outputsAreListedByTheirPlaces()
{
    QFETCH(bool, tellsPlaces);
    const RunningCompositor compositor(
        With({{1920, 0, 1280, 1024}, {0, 1080, 800, 600}, {-500, 30, 500, 400}, {0, 0, 1920, 1080}},
             tellsPlaces));
    const auto screens = tool::ReadWaylandScreens(compositor.Name());
    const std::vector<Rectangle> expected{
        {-500, 30, 500, 400}, {0, 0, 1920, 1080}, {0, 1080, 800, 600}, {1920, 0, 1280, 1024}};
    QVERIFY(screens.areas == expected);
    QCOMPARE(screens.noneReason, std::string());
}

void WaylandScreenTest::turnedOutputIsListedUpright()
{
    const RunningCompositor compositor(With({{0, 0, 1920, 1080, 1}, {1080, 0, 800, 600, 6}}));
    const std::vector<Rectangle> expected{{0, 0, 1080, 1920}, {1080, 0, 800, 600}};
    QVERIFY(tool::ReadWaylandScreens(compositor.Name()).areas == expected);
}

void WaylandScreenTest::outputsOfNoUseAreNotListed()
{
    const RunningCompositor compositor(With(
        {{0, 0, 0, 0}, {1, 0, -5, 100}, {2, 0, 100000, 100}, {3, 0, 100, 100, 99}, {4, 0, 1, 1}}));
    const std::vector<Rectangle> expected{{3, 0, 100, 100}};
    QVERIFY(tool::ReadWaylandScreens(compositor.Name()).areas == expected);
}

void WaylandScreenTest::compositorWithoutOutputsSaysSo()
{
    const RunningCompositor compositor(With(std::vector<FakeOutput>()));
    const auto screens = tool::ReadWaylandScreens(compositor.Name());
    QVERIFY(screens.areas.empty());
    QCOMPARE(QString::fromStdString(screens.noneReason),
             "No screen can be recorded: the Wayland display " +
                 QString::fromStdString(compositor.Name()) + " has none");
}

void WaylandScreenTest::compositorThatDoesNotAnswerIsNotWaitedFor_data()
{
    QTest::addColumn<bool>("accepts");
    QTest::newRow("takes the connection") << true;
    QTest::newRow("takes no connection") << false;
}

void WaylandScreenTest::compositorThatDoesNotAnswerIsNotWaitedFor()
{
    QFETCH(bool, accepts);
    DeafSocket socket;
    QVERIFY(socket.IsGood());
    if (!accepts) {
        socket.Fill();
    }
    QElapsedTimer timer;
    timer.start();
    const auto screens = tool::ReadWaylandScreens(socket.Name());
    QVERIFY(screens.areas.empty());
    QVERIFY2(timer.elapsed() < 2500, qPrintable(QString("%1 ms").arg(timer.elapsed())));
    QVERIFY2(screens.noneReason.ends_with(accepts ? "does not answer" : "cannot be opened"),
             screens.noneReason.c_str());
}

void WaylandScreenTest::compositorWithoutScreencopyIsLeftToOthers()
{
    FakeCompositor behaviour;
    behaviour.screencopyVersion = 0;
    const RunningCompositor compositor(behaviour);
    QVERIFY(!Pictures(compositor).Opened());
}

void WaylandScreenTest::everyFormatHasItsColours_data()
{
    QTest::addColumn<uint>("format");
    QTest::addColumn<uint>("green"); // a pixel
    QTest::newRow("ARGB8888") << kArgb8888 << 0xff00ff00U;
    QTest::newRow("XRGB8888") << kXrgb8888 << 0x0000ff00U;
    QTest::newRow("ABGR8888") << 0x34324241U << 0xff00ff00U;
    QTest::newRow("XBGR8888") << 0x34324258U << 0x0000ff00U;
    QTest::newRow("ARGB2101010") << 0x30335241U << 0x000ffc00U;
    QTest::newRow("XRGB2101010") << 0x30335258U << 0x000ffc00U;
    QTest::newRow("ABGR2101010") << 0x30334241U << 0x000ffc00U;
    QTest::newRow("XBGR2101010") << 0x30334258U << 0x000ffc00U;
    QTest::newRow("RGB888") << 0x34324752U << 0x0000ff00U;
    QTest::newRow("BGR888") << 0x34324742U << 0x0000ff00U;
}

void WaylandScreenTest::everyFormatHasItsColours()
{
    QFETCH(uint, format);
    QFETCH(uint, green);
    FakeCompositor behaviour;
    behaviour.format = format;
    behaviour.pixel = green;
    const RunningCompositor compositor(behaviour);
    Pictures pictures(compositor);
    QVERIFY(pictures.IsOpen());
    QCOMPARE(pictures.Next(), Outcome::Taken);
    constexpr int greenLuma = 145;
    QVERIFY2(std::abs(pictures.At(30, 10) - greenLuma) <= 2,
             qPrintable(QString::number(pictures.At(30, 10))));
    QCOMPARE(pictures.At(30, 40), kBlack);
}

void WaylandScreenTest::pictureFromBelowIsUpright()
{
    FakeCompositor behaviour;
    behaviour.pixel = kWhitePixel;
    behaviour.upsideDown = true;
    const RunningCompositor compositor(behaviour);
    Pictures pictures(compositor);
    QCOMPARE(pictures.Next(), Outcome::Taken);
    QCOMPARE(pictures.At(30, 10), kBlack);
    QCOMPARE(pictures.At(30, 40), kWhite);
}

void WaylandScreenTest::olderCompositorsDeliverPictures_data()
{
    QTest::addColumn<uint>("version");
    QTest::newRow("1") << 1U;
    QTest::newRow("2") << 2U;
    QTest::newRow("3") << 3U;
}

void WaylandScreenTest::olderCompositorsDeliverPictures()
{
    QFETCH(uint, version);
    FakeCompositor behaviour = With({Answer::Copied});
    behaviour.screencopyVersion = version;
    RunningCompositor compositor(behaviour);
    Pictures pictures(compositor);
    for (int i = 0; i < 5; ++i) {
        compositor.Damage();
        QCOMPARE(pictures.Next(), Outcome::Taken);
        QCOMPARE(pictures.At(30, 10), kWhite);
    }
}

void WaylandScreenTest::layoutThatCannotBeIsRefused_data()
{
    QTest::addColumn<uint>("format");
    QTest::addColumn<uint>("width");
    QTest::addColumn<uint>("height");
    QTest::addColumn<uint>("stride");
    QTest::newRow("unknown format") << 0x12345678U << 64U << 48U << 256U;
    QTest::newRow("16 bits") << 0x36314752U << 64U << 48U << 256U;
    QTest::newRow("no width") << kXrgb8888 << 0U << 48U << 256U;
    QTest::newRow("no height") << kXrgb8888 << 64U << 0U << 256U;
    QTest::newRow("rows that overlap") << kXrgb8888 << 64U << 48U << 255U;
    QTest::newRow("no stride") << kXrgb8888 << 64U << 48U << 0U;
    QTest::newRow("immense") << kXrgb8888 << 0xffffffffU << 0xffffffffU << 0xffffffffU;
    QTest::newRow("product overflows") << kXrgb8888 << 0x40000000U << 48U << 0U;
    QTest::newRow("immense stride") << kXrgb8888 << 64U << 48U << 0x7fffffffU;
    QTest::newRow("wider than any monitor") << kXrgb8888 << 20000U << 2U << 80000U;
}

void WaylandScreenTest::layoutThatCannotBeIsRefused()
{
    QFETCH(uint, format);
    QFETCH(uint, width);
    QFETCH(uint, height);
    QFETCH(uint, stride);
    FakeCompositor behaviour;
    behaviour.format = format;
    behaviour.width = width;
    behaviour.height = height;
    behaviour.stride = stride;
    const RunningCompositor compositor(behaviour);
    Pictures pictures(compositor);
    QCOMPARE(pictures.Next(60ms), Outcome::Waiting);
    QVERIFY2(pictures.LostReason().ends_with("pictures of an unknown kind"),
             pictures.LostReason().c_str());
}

void WaylandScreenTest::layoutThatBecomesImpossibleLeavesTheLastPicture()
{
    RunningCompositor compositor(With({Answer::Copied}));
    Pictures pictures(compositor);
    QCOMPARE(pictures.Next(), Outcome::Taken);
    compositor.Change([](FakeCompositor& behaviour) { behaviour.stride = 3; });
    for (int i = 0; i < 5; ++i) {
        compositor.Damage();
        QCOMPARE(pictures.Next(100ms), Outcome::Unchanged);
    }
    compositor.Change([](FakeCompositor& behaviour) {
        behaviour.stride = 256;
        behaviour.pixel = 0;
    });
    compositor.Damage();
    QCOMPARE(pictures.Next(), Outcome::Taken);
    QCOMPARE(pictures.At(30, 10), kBlack);
}

void WaylandScreenTest::pictureThatChangesItsSizeFillsTheSameFrame()
{
    RunningCompositor compositor(With({Answer::Copied}));
    Pictures pictures(compositor);
    QCOMPARE(pictures.Next(), Outcome::Taken);
    for (const QSize& size : {QSize(16, 12), QSize(641, 481), QSize(128, 2), QSize(64, 48)}) {
        compositor.Change([&](FakeCompositor& behaviour) {
            behaviour.width = static_cast<uint32_t>(size.width());
            behaviour.height = static_cast<uint32_t>(size.height());
            behaviour.stride = behaviour.width * 4;
        });
        compositor.Damage();
        QCOMPARE(pictures.Next(), Outcome::Taken);
        QVERIFY(pictures.KeepsItsBounds());
    }
    QCOMPARE(pictures.At(30, 10), kWhite);
}

void WaylandScreenTest::failedFramesAreAskedForAgain()
{
    RunningCompositor compositor(With({Answer::Failed, Answer::FailedLater, Answer::Failed,
                                       Answer::FailedLater, Answer::Copied}));
    Pictures pictures(compositor);
    QCOMPARE(pictures.Next(), Outcome::Taken);
    QCOMPARE(pictures.At(30, 10), kWhite);
    // As a monitor that sleeps: it is not asked more often than pictures are needed.
    compositor.Change([](FakeCompositor& behaviour) { behaviour.answers = {Answer::FailedLater}; });
    const int before = compositor.FramesAskedFor();
    for (int i = 0; i < 5; ++i) {
        compositor.Damage();
        QCOMPARE(pictures.Next(), Outcome::Unchanged);
    }
    QCOMPARE(compositor.FramesAskedFor() - before, 5);
    compositor.Change([](FakeCompositor& behaviour) { behaviour.answers = {Answer::Copied}; });
    compositor.Damage();
    QCOMPARE(pictures.Next(), Outcome::Taken);
}

void WaylandScreenTest::strangeOrderOfEventsIsSurvived_data()
{
    QTest::addColumn<Answer>("answer");
    QTest::newRow("a picture that nobody has described") << Answer::NotDescribed;
    QTest::newRow("a description that comes twice") << Answer::DescribedTwice;
}

void WaylandScreenTest::strangeOrderOfEventsIsSurvived()
{
    QFETCH(Answer, answer);
    for (const uint32_t version : {1U, 3U}) {
        FakeCompositor behaviour = With({answer, answer, Answer::Copied});
        behaviour.screencopyVersion = version;
        RunningCompositor compositor(behaviour);
        Pictures pictures(compositor);
        for (int i = 0; i < 3; ++i) {
            compositor.Damage();
            QCOMPARE(pictures.Next(), Outcome::Taken);
            QCOMPARE(pictures.At(30, 10), kWhite);
        }
    }
}

void WaylandScreenTest::stillScreenIsAskedForOnce()
{
    const RunningCompositor compositor(With({Answer::Copied}));
    Pictures pictures(compositor);
    QCOMPARE(pictures.Next(), Outcome::Taken);
    QCOMPARE(pictures.Next(), Outcome::Unchanged);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 100; ++i) {
        QCOMPARE(pictures.Next(), Outcome::Unchanged);
    }
    QVERIFY2(timer.elapsed() < 500,
             qPrintable(QString("waited %1 ms for a still screen").arg(timer.elapsed())));
    QCOMPARE(compositor.FramesAskedFor(), 2);
}

void WaylandScreenTest::changeOfAStillScreenIsThereAtTheNextLook()
{
    RunningCompositor compositor(With({Answer::Copied}));
    Pictures pictures(compositor);
    QCOMPARE(pictures.Next(), Outcome::Taken);
    for (int i = 0; i < 20; ++i) {
        QCOMPARE(pictures.Next(), Outcome::Unchanged);
        QTRY_COMPARE(compositor.CopiesWaiting(), 1);
        compositor.Change(
            [&](FakeCompositor& behaviour) { behaviour.pixel = i % 2 == 0 ? 0 : kWhitePixel; });
        compositor.Damage();
        QVERIFY(QTest::qWaitFor([&] { return pictures.Next(0ms) == Outcome::Taken; }, 1000));
        QCOMPARE(pictures.At(30, 10), i % 2 == 0 ? kBlack : kWhite);
    }
}

void WaylandScreenTest::compositorThatFallsSilentLeavesTheLastPicture()
{
    RunningCompositor compositor(With({Answer::Copied, Answer::Nothing}));
    Pictures pictures(compositor);
    QCOMPARE(pictures.Next(), Outcome::Taken);
    compositor.Damage();
    for (int i = 0; i < 10; ++i) {
        QCOMPARE(pictures.Next(100ms), Outcome::Unchanged);
    }
    const RunningCompositor silent(With({Answer::Nothing}));
    Pictures none(silent);
    QCOMPARE(none.Next(60ms), Outcome::Waiting);
    QVERIFY2(none.LostReason().ends_with("delivers no picture of it"), none.LostReason().c_str());
}

void WaylandScreenTest::compositorThatGoesIsLost_data()
{
    QTest::addColumn<QList<Answer>>("answers");
    QTest::newRow("before the first picture") << QList{Answer::Disconnected};
    QTest::newRow("in the first picture") << QList{Answer::DisconnectedLater};
    QTest::newRow("before a picture") << QList{Answer::Copied, Answer::Disconnected};
    QTest::newRow("in a picture") << QList{Answer::Copied, Answer::DisconnectedLater};
}

void WaylandScreenTest::compositorThatGoesIsLost()
{
    QFETCH(QList<Answer>, answers);
    RunningCompositor compositor(With(std::vector(answers.begin(), answers.end())));
    Pictures pictures(compositor);
    for (qsizetype i = 1; i < answers.size(); ++i) {
        QCOMPARE(pictures.Next(), Outcome::Taken);
        compositor.Damage();
    }
    QVERIFY(QTest::qWaitFor([&] { return pictures.Next(100ms) == Outcome::Lost; }, 2000));
    QCOMPARE(pictures.Next(100ms), Outcome::Lost); // and stays so
    QVERIFY(!pictures.LostReason().empty());
}

void WaylandScreenTest::outputThatGoesIsLost()
{
    RunningCompositor compositor(With({Answer::Copied}));
    Pictures pictures(compositor);
    QCOMPARE(pictures.Next(), Outcome::Taken);
    compositor.RemoveOutputs();
    QVERIFY(QTest::qWaitFor([&] { return pictures.Next(100ms) == Outcome::Lost; }, 2000));
    QCOMPARE(QString::fromStdString(pictures.LostReason()), QString("The recorded screen is gone"));
}

void WaylandScreenTest::screenThatWasChangedSinceTheListIsNotRecorded()
{
    const RunningCompositor compositor(With({{0, 0, 64, 48}}));
    const Pictures pictures(compositor, {0, 0, 128, 48});
    QVERIFY(pictures.Opened() && !pictures.Opened()->screen);
    QVERIFY(!pictures.Opened()->reason.empty());
}

QTEST_GUILESS_MAIN(WaylandScreenTest)
#include "tool_wayland_screen_test.moc"
