#include "tests/support/desktop.h"

#include <QTest>

std::optional<DesktopWindow> Desktop::Shown(const QString& title) const
{
    for (const DesktopWindow& window : Windows()) {
        if (window.visible && window.title == title) {
            return window;
        }
    }
    return std::nullopt;
}

std::optional<DesktopWindow> Desktop::ByTitle(const QString& title) const
{
    for (const DesktopWindow& window : Windows()) {
        if (window.title == title) {
            return window;
        }
    }
    return std::nullopt;
}

std::optional<DesktopWindow> Desktop::AtRest(const QString& title) const
{
    constexpr int looksAtRest = 4;
    std::optional<DesktopWindow> found;
    int looks = 0;
    const bool rests = WaitUntil([&] {
        const auto now = Shown(title);
        looks = now && found && now->place == found->place ? looks + 1 : 0;
        found = now;
        return looks == looksAtRest;
    });
    return rests ? found : std::nullopt;
}

bool Desktop::IsInTaskList(const QString& title) const
{
    const auto window = ByTitle(title);
    return window && (window->visible || IsMinimised(window->id));
}

bool WaitUntil(const std::function<bool()>& condition, int milliseconds)
{
    return QTest::qWaitFor(condition, milliseconds);
}
