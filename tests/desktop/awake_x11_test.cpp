// Screen savers of an X server while `tool` records it.
#include "tests/support/desktop.h"
#include "tests/support/own_screen.h"
#include "tests/support/tool_movies.h"
#include "tests/support/tool_take.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include <cstdlib>
#include <functional>
#include <memory>
#include <xcb/screensaver.h>
#include <xcb/xcb.h>

namespace {

template <typename Reply>
using Owned = std::unique_ptr<Reply, decltype(&std::free)>;

template <typename Reply>
Owned<Reply> Own(Reply* reply)
{
    return {reply, std::free};
}

// A user's view of the server's screen saver, and what a screen saver program does there.
class SavedScreen
{
public:
    explicit SavedScreen(const OwnScreen& screen)
        : m_pConnection(xcb_connect(screen.Name(), nullptr)),
          m_root(xcb_setup_roots_iterator(xcb_get_setup(m_pConnection)).data->root)
    {
    }
    SavedScreen(const SavedScreen&) = delete;
    SavedScreen& operator=(const SavedScreen&) = delete;
    ~SavedScreen() { xcb_disconnect(m_pConnection); }

    void BlankAfter(int seconds)
    {
        xcb_set_screen_saver(m_pConnection, static_cast<int16_t>(seconds), 0,
                             XCB_BLANKING_PREFERRED, XCB_EXPOSURES_ALLOWED);
        xcb_flush(m_pConnection);
    }
    bool IsBlank() const { return Info()->state == XCB_SCREENSAVER_STATE_ON; }
    // Milliseconds since somebody has touched anything.
    uint32_t IdleTime() const { return Info()->ms_since_user_input; }

    // The window and the state of an xscreensaver.
    void AddXscreensaver(uint8_t format, const QByteArray& status)
    {
        m_window = xcb_generate_id(m_pConnection);
        xcb_create_window(m_pConnection, XCB_COPY_FROM_PARENT, m_window, m_root, 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_change_property(m_pConnection, XCB_PROP_MODE_REPLACE, m_window,
                            Atom("_SCREENSAVER_VERSION"), XCB_ATOM_STRING, 8, 4, "6.06");
        xcb_change_property(m_pConnection, XCB_PROP_MODE_REPLACE, m_root,
                            Atom("_SCREENSAVER_STATUS"), XCB_ATOM_INTEGER, format,
                            static_cast<uint32_t>(status.size() / (format / 8)), status.data());
        xcb_flush(m_pConnection);
    }
    // Whether xscreensaver has been told that somebody is there.
    bool IsDeactivated() const
    {
        while (const auto event = Own(xcb_poll_for_event(m_pConnection))) {
            const auto* message = reinterpret_cast<xcb_client_message_event_t*>(event.get());
            if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE &&
                message->window == m_window && message->type == Atom("SCREENSAVER") &&
                message->data.data32[0] == Atom("DEACTIVATE")) {
                return true;
            }
        }
        return false;
    }

private:
    Owned<xcb_screensaver_query_info_reply_t> Info() const
    {
        return Own(xcb_screensaver_query_info_reply(
            m_pConnection, xcb_screensaver_query_info(m_pConnection, m_root), nullptr));
    }
    uint32_t Atom(const QByteArray& name) const
    {
        return Own(xcb_intern_atom_reply(
                       m_pConnection,
                       xcb_intern_atom(m_pConnection, 0, static_cast<uint16_t>(name.size()), name),
                       nullptr))
            ->atom;
    }

    xcb_connection_t* m_pConnection;
    uint32_t m_root;
    uint32_t m_window = 0;
};

using End = std::function<void(Take&)>;

} // namespace

Q_DECLARE_METATYPE(End)

class AwakeX11Test : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void screenGoesDarkAfterARecordingOnly_data();
    void screenGoesDarkAfterARecordingOnly();
    void recordingCountsAsSomebodyBeingThere();
    void xscreensaverIsHeldOff_data();
    void xscreensaverIsHeldOff();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    std::unique_ptr<Take> Record();

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<OwnScreen> m_screen;
};

void AwakeX11Test::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_screen = std::make_unique<OwnScreen>(QStringList{"-screen", "0", "320x200x24"});
    QVERIFY2(m_screen->Good(), "no X server");
}

// Returns the recording when it is running.
std::unique_ptr<Take> AwakeX11Test::Record()
{
    auto take = std::make_unique<Take>(m_folder->filePath("o.mp4"), "0",
                                       QStringList{"DISPLAY=" + m_screen->Name()});
    return WaitUntil([&] { return take->HasPicture(); }) ? std::move(take) : nullptr;
}

void AwakeX11Test::screenGoesDarkAfterARecordingOnly_data()
{
    QTest::addColumn<End>("end");
    QTest::newRow("stopped") << End([](Take& take) { take.Type("q\n"); });
    QTest::newRow("recorder killed") << End([](Take& take) { take.EndRecorder(); });
    QTest::newRow("tool ended") << End([](Take& take) { take.EndTool(SIGTERM); });
    QTest::newRow("tool killed") << End([](Take& take) { take.EndTool(SIGKILL); });
    QTest::newRow("ffmpeg killed") << End([](Take& take) { take.EndFfmpeg(SIGKILL); });
}

void AwakeX11Test::screenGoesDarkAfterARecordingOnly()
{
    QFETCH(End, end);
    SavedScreen saver(*m_screen);
    saver.BlankAfter(1);
    QVERIFY2(WaitUntil([&] { return saver.IsBlank(); }), "the server has no screen saver");

    const auto take = Record();
    QVERIFY2(take, "nothing is recorded");
    QVERIFY2(WaitUntil([&] { return !saver.IsBlank(); }), "the recording does not show the screen");
    const double lit = take->Taken();
    bool isBlank = false;
    QVERIFY(WaitUntil([&] {
        isBlank = isBlank || saver.IsBlank();
        return isBlank || take->Taken() > lit + 1.7;
    }));
    QVERIFY2(!isBlank, "the screen has gone dark");

    end(*take);
    QVERIFY2(WaitUntil([&] { return saver.IsBlank(); }),
             "the screen stays lit after the recording");
}

// Lockers of small desktops ask the server how long nobody has touched anything.
void AwakeX11Test::recordingCountsAsSomebodyBeingThere()
{
    SavedScreen saver(*m_screen);
    QVERIFY(WaitUntil([&] { return saver.IdleTime() > 1000; }));
    QElapsedTimer time;
    time.start();
    const auto take = Record();
    QVERIFY2(take, "nothing is recorded");
    QVERIFY2(WaitUntil([&] { return saver.IdleTime() < time.elapsed(); }), "it does not count");
}

void AwakeX11Test::xscreensaverIsHeldOff_data()
{
    QTest::addColumn<uint>("format");
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<bool>("told");
    const QByteArray none(4, '\0');
    QTest::newRow("waiting") << 32U << none + QByteArray(8, '\1') << true;
    QTest::newRow("active") << 32U << QByteArray(12, '\1') << false; // it might ask for a password
    QTest::newRow("no status") << 32U << QByteArray() << false;
    QTest::newRow("short status") << 8U << none << false;
}

void AwakeX11Test::xscreensaverIsHeldOff()
{
    QFETCH(uint, format);
    QFETCH(QByteArray, status);
    QFETCH(bool, told);
    SavedScreen saver(*m_screen);
    saver.AddXscreensaver(static_cast<uint8_t>(format), status);
    const auto take = Record();
    QVERIFY2(take, "nothing is recorded");
    if (told) {
        QVERIFY2(WaitUntil([&] { return saver.IsDeactivated(); }), "it is not told");
    } else {
        QVERIFY(WaitUntil([&] { return take->Taken() > 1; }));
        QVERIFY2(!saver.IsDeactivated(), "it is told");
    }
    take->Type("q\n");
    QVERIFY(take->WaitForEnd());
    QCOMPARE(take->ExitCode(), 0);
}

QTEST_GUILESS_MAIN(AwakeX11Test)
#include "awake_x11_test.moc"
