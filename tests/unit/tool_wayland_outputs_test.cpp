// The outputs of compositors, also of those that answer nothing of use.
#include "tests/support/fake_pictures.h"

#include <QElapsedTimer>
#include <QTest>

#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

using tool::Rectangle;

namespace {

FakeCompositor With(const std::vector<FakeOutput>& outputs, bool tellsPlaces = true)
{
    FakeCompositor behaviour;
    behaviour.outputs = outputs;
    behaviour.tellsPlaces = tellsPlaces;
    return behaviour;
}

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

} // namespace

class WaylandOutputsTest : public QObject
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
    static void screenThatWasChangedSinceTheListIsNotRecorded();
};

void WaylandOutputsTest::outputsAreListedByTheirPlaces_data()
{
    QTest::addColumn<bool>("tellsPlaces");
    QTest::newRow("xdg-output") << true;
    QTest::newRow("wl_output") << false;
}

void WaylandOutputsTest::outputsAreListedByTheirPlaces()
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

void WaylandOutputsTest::turnedOutputIsListedUpright()
{
    const RunningCompositor compositor(With({{0, 0, 1920, 1080, 1}, {1080, 0, 800, 600, 6}}));
    const std::vector<Rectangle> expected{{0, 0, 1080, 1920}, {1080, 0, 800, 600}};
    QVERIFY(tool::ReadWaylandScreens(compositor.Name()).areas == expected);
}

void WaylandOutputsTest::outputsOfNoUseAreNotListed()
{
    const RunningCompositor compositor(With(
        {{0, 0, 0, 0}, {1, 0, -5, 100}, {2, 0, 100000, 100}, {3, 0, 100, 100, 99}, {4, 0, 1, 1}}));
    const std::vector<Rectangle> expected{{3, 0, 100, 100}};
    QVERIFY(tool::ReadWaylandScreens(compositor.Name()).areas == expected);
}

void WaylandOutputsTest::compositorWithoutOutputsSaysSo()
{
    const RunningCompositor compositor(With(std::vector<FakeOutput>()));
    const auto screens = tool::ReadWaylandScreens(compositor.Name());
    QVERIFY(screens.areas.empty());
    QCOMPARE(QString::fromStdString(screens.noneReason),
             "No screen can be recorded: the Wayland display " +
                 QString::fromStdString(compositor.Name()) + " has none");
}

void WaylandOutputsTest::compositorThatDoesNotAnswerIsNotWaitedFor_data()
{
    QTest::addColumn<bool>("accepts");
    QTest::newRow("takes the connection") << true;
    QTest::newRow("takes no connection") << false;
}

void WaylandOutputsTest::compositorThatDoesNotAnswerIsNotWaitedFor()
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

void WaylandOutputsTest::compositorWithoutScreencopyIsLeftToOthers()
{
    FakeCompositor behaviour;
    behaviour.screencopyVersion = 0;
    const RunningCompositor compositor(behaviour);
    QVERIFY(!FakePictures(compositor).Opened());
}

void WaylandOutputsTest::screenThatWasChangedSinceTheListIsNotRecorded()
{
    const RunningCompositor compositor(With({{0, 0, 64, 48}}));
    const FakePictures pictures(compositor, {0, 0, 128, 48});
    QVERIFY(pictures.Opened() && !pictures.Opened()->screen);
    QVERIFY(!pictures.Opened()->reason.empty());
}

QTEST_GUILESS_MAIN(WaylandOutputsTest)
#include "tool_wayland_outputs_test.moc"
