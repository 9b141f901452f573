#include "app/close_watcher.h"
#include "ui/cmessagebox.h"

#include <QApplication>
#include <QTest>
#include <QTimer>

// What ends the program, and what must not.
class CloseWatcherTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void closingAMessageWhileTheWindowIsHiddenDoesNotEndTheProgram()
    {
        QWidget window;
        const CloseWatcher watcher(window);
        window.show();
        QTimer::singleShot(0, &window, [&] {
            window.hide();
            CMessageBox box(nullptr, {});
            box.InitInfoDialog("text");
            QTimer::singleShot(0, &box, [&] { box.close(); });
            box.exec();
            // Whatever the close of the box has set off comes before this.
            QTimer::singleShot(50, &window, [] { QCoreApplication::exit(7); });
        });
        QCOMPARE(QApplication::exec(), 7);
    }

    void hidingTheWindowDoesNotEndTheProgram()
    {
        QWidget window;
        const CloseWatcher watcher(window);
        window.show();
        QTimer::singleShot(0, &window, [&] {
            window.hide();
            QTimer::singleShot(50, &window, [] { QCoreApplication::exit(7); });
        });
        QCOMPARE(QApplication::exec(), 7);
    }

    void closingTheWindowEndsTheProgramShownOrHidden_data()
    {
        QTest::addColumn<bool>("hidden");
        QTest::newRow("shown") << false;
        QTest::newRow("hidden") << true;
    }

    void closingTheWindowEndsTheProgramShownOrHidden()
    {
        QFETCH(bool, hidden);
        QWidget window;
        const CloseWatcher watcher(window);
        window.show();
        QTimer::singleShot(0, &window, [&] {
            window.setVisible(!hidden);
            window.close();
            QTimer::singleShot(10000, &window, [] { QCoreApplication::exit(7); });
        });
        QCOMPARE(QApplication::exec(), 0);
    }
};

QTEST_MAIN(CloseWatcherTest)
#include "close_watcher_test.moc"
