#include "tests/support/gnome_desktop.h"

#include "tests/support/run_program.h"

#include <QFile>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

#include <linux/input-event-codes.h>
#include <unistd.h>

namespace {

// Only the session's user may use its bus.
QByteArray AskShell(const QStringList& call)
{
    QStringList words{"dbus-send", "--session", "--print-reply=literal", "--dest=org.gnome.Shell"};
    words += call;
    if (geteuid() == 0) {
        const QString user = qEnvironmentVariable("LUMENFOLD_SESSION_USER");
        words =
            QStringList{"setpriv", "--reuid=" + user, "--clear-groups", "--inh-caps=-all"} + words;
    }
    return RunProgram(words.first(), words.mid(1)).output;
}

QString Window(uint32_t window)
{
    return QString("global.get_window_actors().map(a => a.meta_window).find(w => "
                   "w.get_stable_sequence() == %1)")
        .arg(window);
}

} // namespace

// The reply is "boolean true", then the value in quotes.
QByteArray GnomeDesktop::Run(const QString& script)
{
    const QByteArray reply =
        AskShell({"/org/gnome/Shell", "org.gnome.Shell.Eval", "string:" + script});
    if (!reply.contains("boolean true")) {
        return {};
    }
    const qsizetype start = reply.indexOf("boolean true") + qsizetype(sizeof "boolean true");
    return reply.mid(start).trimmed();
}

GnomeDesktop::GnomeDesktop()
{
    m_good = Run("Main.overview.hide();"
                 "const seat = imports.gi.Clutter.get_default_backend().get_default_seat();"
                 "const kind = imports.gi.Clutter.InputDeviceType;"
                 "global.pointer = seat.create_virtual_device(kind.POINTER_DEVICE);"
                 "global.keyboard = seat.create_virtual_device(kind.KEYBOARD_DEVICE);"
                 "1") == "1" &&
             QTest::qWaitFor([] { return Run("Main.overview.visible") == "false"; }, 15000);
}

QList<DesktopWindow> GnomeDesktop::Windows() const
{
    QList<DesktopWindow> windows;
    const QByteArray found = Run("global.get_window_actors().map(a => { const w = a.meta_window;"
                                 " const r = w.frame_rect_to_client_rect(w.get_frame_rect());"
                                 " return [w.get_stable_sequence(), w.get_title(), "
                                 "w.get_wm_class(), r.x, r.y, r.width, r.height,"
                                 " !w.minimized && a.mapped, !w.is_override_redirect()]; })");
    for (const QJsonValue value : QJsonDocument::fromJson(found).array()) {
        windows.append(
            {static_cast<uint32_t>(value[0].toInt()), 0, value[1].toString(), value[2].toString(),
             QRect(value[3].toInt(), value[4].toInt(), value[5].toInt(), value[6].toInt()),
             value[7].toBool(), value[8].toBool()});
    }
    return windows;
}

bool GnomeDesktop::Is(uint32_t window, const QString& property)
{
    return Run(Window(window) + "?." + property) == "true";
}

bool GnomeDesktop::IsMinimised(uint32_t window) const
{
    return Is(window, "minimized");
}

bool GnomeDesktop::HasFocus(uint32_t window) const
{
    return Is(window, "has_focus()");
}

bool GnomeDesktop::IsFromXServer(uint32_t window) const
{
    return Is(window, "get_client_type() === imports.gi.Meta.WindowClientType.X11");
}

void GnomeDesktop::Close(uint32_t window)
{
    Run(Window(window) + ".delete(global.get_current_time())");
}

void GnomeDesktop::Activate(uint32_t window)
{
    Run("Main.activateWindow(" + Window(window) + ")");
}

// Each event for itself: a client sees those that come too close together as one.
void GnomeDesktop::Click(QPoint place, int button, int times)
{
    Run(QString("global.pointer.notify_absolute_motion(GLib.get_monotonic_time(), %1, %2)")
            .arg(place.x())
            .arg(place.y()));
    for (int i = 0; i < 2 * times; ++i) {
        Run(QString("global.pointer.notify_button(GLib.get_monotonic_time(), %1, %2)")
                .arg(button == 3 ? 3 : 1)
                .arg(i % 2 == 0 ? 1 : 0));
    }
}

void GnomeDesktop::Press(const QStringList& keys)
{
    static const QHash<QString, int> codes{{"Return", KEY_ENTER}, {"space", KEY_SPACE},
                                           {"Escape", KEY_ESC},   {"Tab", KEY_TAB},
                                           {"Down", KEY_DOWN},    {"Super", KEY_LEFTMETA}};
    for (const QString& key : keys) {
        QVERIFY2(codes.contains(key), qPrintable("no code of the key " + key));
        for (const int down : {1, 0}) {
            Run(QString("global.keyboard.notify_key(GLib.get_monotonic_time(), %1, %2)")
                    .arg(codes[key])
                    .arg(down));
        }
    }
}

void GnomeDesktop::Type(const QString& text)
{
    QFAIL(qPrintable("no way to type " + text));
}

void GnomeDesktop::Screenshot(const QString& file) const
{
    const QString shot = qEnvironmentVariable("XDG_RUNTIME_DIR") + "/screenshot.png";
    AskShell({"/org/gnome/Shell/Screenshot", "org.gnome.Shell.Screenshot.Screenshot",
              "boolean:true", "boolean:false", "string:" + shot});
    QFile::remove(file);
    QFile::copy(shot, file);
}

bool GnomeDesktop::ClickInDash(const QString& title)
{
    Press({"Super"});
    const QString icon =
        "Main.overview.dash._box.get_children().map(c => c.child?._delegate).find(i =>"
        " i?.app?.get_windows().some(w => w.get_title() === '" +
        title + "'))";
    QJsonArray place;
    const auto look = [&] {
        const QByteArray found = Run("const i = " + icon +
                                     "; const [x, y] = i.get_transformed_position();"
                                     "Main.overview.animationInProgress ? []"
                                     " : [x + i.width / 2, y + i.height / 2]");
        const QJsonArray last = place;
        place = QJsonDocument::fromJson(found).array();
        return place.size() == 2 && place == last; // it slides in
    };
    if (!QTest::qWaitFor(look, 15000)) {
        return false;
    }
    Click({place[0].toInt(), place[1].toInt()});
    return QTest::qWaitFor([] { return Run("Main.overview.visible") == "false"; }, 15000);
}

bool GnomeDesktop::ClickStopSharing()
{
    QJsonArray place;
    const auto look = [&] {
        place = QJsonDocument::fromJson(Run("const b = Main.panel.statusArea.screenSharing;"
                                            "const [x, y] = b.get_transformed_position();"
                                            "b.mapped ? [x + b.width / 2, y + b.height / 2] : []"))
                    .array();
        return place.size() == 2;
    };
    if (!QTest::qWaitFor(look, 15000)) {
        return false;
    }
    Click({place[0].toInt(), place[1].toInt()});
    return true;
}
