#include "tests/support/recorder.h"

#include <QFile>
#include <QImage>
#include <QTest>

namespace {

// The centre of a widget in the window.
QPoint Position(const QString& widget)
{
    QFile file(UI_POSITIONS);
    if (file.open(QIODevice::ReadOnly)) {
        for (const QString& line : QString::fromUtf8(file.readAll()).split('\n')) {
            const QStringList words = line.split(' ', Qt::SkipEmptyParts);
            if (words.value(0) == widget) {
                return {words.value(1).toInt(), words.value(2).toInt()};
            }
        }
    }
    QTest::qFail(qPrintable("no position of " + widget), __FILE__, __LINE__);
    return {};
}

} // namespace

void Recorder::ClickInWindow(QPoint place, int times)
{
    QVERIFY2(WaitShown(), "the window is not shown, for a click in it");
    m_desktop.Click(m_desktop.Shown(kTitle)->place.topLeft() + place, 1, times);
}

void Recorder::Click(const QString& widget, int times)
{
    ClickInWindow(Position(widget), times);
}

bool Recorder::OpenPage(const QString& page)
{
    Click("home." + page);
    const QPoint inBack = Position(page + ".back") - QPoint(0, 10); // above its text
    const QString file = m_folder.filePath("page.png");
    return WaitUntil([&] {
        m_desktop.Screenshot(file);
        const auto window = m_desktop.Shown(kTitle);
        return window && QImage(file).pixelColor(window->place.topLeft() + inBack).value() > 128;
    });
}

void Recorder::ClickBetween(const QString& from, const QString& to, double share)
{
    const QPoint start = Position(from);
    ClickInWindow(start + (Position(to) - start) * share);
}

void Recorder::ClickRow(const QString& firstRow, int row)
{
    constexpr int rowHeight = 30;
    ClickInWindow(Position(firstRow) + QPoint(0, row * rowHeight));
}

bool Recorder::ChooseFolder(const QString& folder)
{
    const auto chooser = [this]() -> std::optional<DesktopWindow> {
        for (const DesktopWindow& window : m_desktop.Windows()) {
            if (window.visible && window.managed && window.program == "lumenfold-recorder" &&
                window.title.contains("Directory")) {
                return window;
            }
        }
        return std::nullopt;
    };
    if (!WaitUntil([&] { return chooser().has_value(); })) {
        return false;
    }
    m_desktop.Type(folder);
    m_desktop.Press({"Return"});
    return WaitUntil([&] { return !chooser(); });
}

void Recorder::ChooseAudio(int entry)
{
    Click("record.audio");
    QVERIFY2(WaitUntil([this] { return Menu().has_value(); }), "the audio choices do not open");
    m_desktop.Press(QStringList{"Home"} + QStringList(entry, "Down") + QStringList{"Return"});
    QVERIFY2(WaitUntil([this] { return !Menu(); }), "the audio choices do not close");
}
