#include "tests/support/sway_desktop.h"

#include "tests/support/run_program.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <linux/input-event-codes.h>

namespace {

QRect Rect(const QJsonValue& value)
{
    return {value["x"].toInt(), value["y"].toInt(), value["width"].toInt(),
            value["height"].toInt()};
}

// All nodes of the tree, parents before children.
void AddNodes(QList<QJsonObject>& nodes, const QJsonObject& node)
{
    nodes << node;
    for (const char* children : {"nodes", "floating_nodes"}) {
        for (const QJsonValue child : node[children].toArray()) {
            AddNodes(nodes, child.toObject());
        }
    }
}

QList<QJsonObject> Nodes()
{
    QList<QJsonObject> nodes;
    AddNodes(nodes, QJsonDocument::fromJson(SwayDesktop::Ask({"-t", "get_tree"})).object());
    return nodes;
}

} // namespace

QByteArray SwayDesktop::Ask(const QStringList& arguments)
{
    return RunProgram("swaymsg", QStringList{"-r"} + arguments).output;
}

bool SwayDesktop::Good() const
{
    return m_seat.Good();
}

QList<DesktopWindow> SwayDesktop::Windows() const
{
    QList<DesktopWindow> windows;
    for (const QJsonObject& node : Nodes()) {
        if (node.contains("pid")) {
            const QRect content = Rect(node["window_rect"]);
            windows.append({static_cast<uint32_t>(node["id"].toInt()), 0, node["name"].toString(),
                            node["app_id"].toString(),
                            content.translated(Rect(node["rect"]).topLeft()),
                            node["visible"].toBool(), true});
        }
    }
    return windows;
}

QJsonObject SwayDesktop::Node(uint32_t window) const
{
    for (const QJsonObject& node : Nodes()) {
        if (node["id"].toInt() == static_cast<int>(window)) {
            return node;
        }
    }
    return {};
}

bool SwayDesktop::IsNative(uint32_t window) const
{
    return Node(window)["shell"] == "xdg_shell";
}

bool SwayDesktop::HasFocus(uint32_t window) const
{
    return Node(window)["focused"].toBool();
}

void SwayDesktop::Close(uint32_t window)
{
    Ask({QString("[con_id=%1] kill").arg(window)});
}

void SwayDesktop::Activate(uint32_t window)
{
    Ask({QString("[con_id=%1] focus").arg(window)});
}

void SwayDesktop::MoveTo(QPoint place)
{
    m_seat.Move(place, Rect(Nodes().first()["rect"]).size());
}

void SwayDesktop::Click(QPoint place, int button, int times)
{
    MoveTo(place);
    for (int i = 0; i < 2 * times; ++i) {
        m_seat.HoldButton(button == 3 ? BTN_RIGHT : BTN_LEFT, i % 2 == 0);
    }
}

void SwayDesktop::Drag(QPoint from, QPoint to)
{
    constexpr int steps = 10;
    MoveTo(from);
    m_seat.HoldButton(BTN_LEFT, true);
    for (int i = 1; i <= steps; ++i) {
        MoveTo(from + (to - from) * i / steps);
    }
    m_seat.HoldButton(BTN_LEFT, false);
}

void SwayDesktop::Press(const QStringList& keys)
{
    static const QHash<QString, uint32_t> codes{{"Return", KEY_ENTER}, {"space", KEY_SPACE},
                                                {"Escape", KEY_ESC},   {"Tab", KEY_TAB},
                                                {"Home", KEY_HOME},    {"Down", KEY_DOWN}};
    for (const QString& key : keys) {
        QVERIFY2(codes.contains(key), qPrintable("no code of the key " + key));
        m_seat.HoldKey(codes[key], true);
        m_seat.HoldKey(codes[key], false);
    }
}

void SwayDesktop::Type(const QString& text)
{
    QFAIL(qPrintable("no way to type " + text));
}

void SwayDesktop::Screenshot(const QString& file) const
{
    RunProgram("grim", {file});
}
