#include "app/window_platform.h"

#include <QTest>

// Which of Qt's platforms draws the window.
class WindowPlatformTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        qputenv("WAYLAND_DISPLAY", "wayland-7");
        qputenv("XDG_CURRENT_DESKTOP", "sway");
        qunsetenv("QT_QPA_PLATFORM");
    }
    void cleanup() { qputenv("QT_QPA_PLATFORM", "offscreen"); }

    void theSessionDecides_data()
    {
        QTest::addColumn<QString>("wayland");
        QTest::addColumn<QString>("desktop");
        QTest::addColumn<QString>("platforms");
        QTest::newRow("an X11 session") << ""
                                        << "GNOME"
                                        << "";
        QTest::newRow("sway") << "wayland-1"
                              << "sway"
                              << "wayland;xcb";
        QTest::newRow("KDE") << "wayland-0"
                             << "KDE"
                             << "wayland;xcb";
        QTest::newRow("unknown") << "wayland-0"
                                 << ""
                                 << "wayland;xcb";
        QTest::newRow("GNOME") << "wayland-0"
                               << "GNOME"
                               << "xcb;wayland";
        QTest::newRow("GNOME of a distribution") << "wayland-0"
                                                 << "ubuntu:GNOME"
                                                 << "xcb;wayland";
        QTest::newRow("not GNOME") << "wayland-0"
                                   << "GNOMES:MY-GNOME"
                                   << "wayland;xcb";
    }

    void theSessionDecides()
    {
        QFETCH(QString, wayland);
        QFETCH(QString, desktop);
        QTEST(QString(WindowPlatforms({wayland.toUtf8(), desktop.toUtf8()})), "platforms");
    }

    void theChoiceIsMadeForQt()
    {
        QVERIFY(ChooseWindowPlatform());
        QCOMPARE(qgetenv("QT_QPA_PLATFORM"), "wayland;xcb");
    }

    void theUsersChoiceIsKept()
    {
        qputenv("QT_QPA_PLATFORM", "minimal");
        QVERIFY(!ChooseWindowPlatform());
        QCOMPARE(qgetenv("QT_QPA_PLATFORM"), "minimal");
    }

    void anX11SessionIsLeftAlone()
    {
        qunsetenv("WAYLAND_DISPLAY");
        QVERIFY(!ChooseWindowPlatform());
        QVERIFY2(!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"), "Qt is told what to choose");
    }
};

QTEST_GUILESS_MAIN(WindowPlatformTest)
#include "window_platform_test.moc"
