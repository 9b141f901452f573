#pragma once

#include "tests/support/recorder.h"
#include "tests/support/x11_desktop.h"

#include <QTest>

// A test on a virtual desktop with a system tray.
class DesktopTest : public QObject
{
    Q_OBJECT

protected:
    // Other requirements of the test.
    virtual void Prepare() {}
    virtual bool WantsTray() const { return true; }

    X11Desktop m_desktop;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_desktop.Good(), "no X display: run it through scripts/virtual-desktop");
        QVERIFY2(m_desktop.HasTray() == WantsTray(),
                 WantsTray() ? "no system tray" : "there is a system tray");
        Prepare();
    }
};
