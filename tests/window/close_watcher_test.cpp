#include "app/close_watcher.h"
#include "ui/cmessagebox.h"

#include <QApplication>
#include <QTest>
#include <QTimer>

#include <memory>

// What ends the program, and what must not.
class CloseWatcherTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Qt's default, which every test starts with.
    void init() { QApplication::setQuitOnLastWindowClosed(true); }

    void closingAMessageWhileTheWindowIsHiddenDoesNotEndTheProgram_data()
    {
        QTest::addColumn<bool>("watched");
        QTest::addColumn<int>("result");
        QTest::newRow("watched") << true << kWentOn;
        QTest::newRow("by Qt's own rule it does") << false << 0;
    }

    void closingAMessageWhileTheWindowIsHiddenDoesNotEndTheProgram()
    {
        QFETCH(bool, watched);
        QWidget window;
        const auto watcher = watched ? std::make_unique<CloseWatcher>(window) : nullptr;
        window.show();
        QTimer::singleShot(0, &window, [&] {
            window.hide();
            CMessageBox box(nullptr, {});
            box.InitInfoDialog("text");
            QTimer::singleShot(0, &box, [&] { box.close(); });
            box.exec();
            EndAfterWhatIsPosted();
        });
        QTEST(QApplication::exec(), "result");
    }

    void hidingTheWindowDoesNotEndTheProgram()
    {
        QWidget window;
        const CloseWatcher watcher(window);
        window.show();
        QTimer::singleShot(0, &window, [&] {
            window.hide();
            EndAfterWhatIsPosted();
        });
        QCOMPARE(QApplication::exec(), kWentOn);
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

private:
    static constexpr int kWentOn = 7;

    // A quit caused by hiding or closing is posted at once, so it comes before this call. The timer
    // fires in a later iteration of the loop, which is never reached once the loop ends.
    static void EndAfterWhatIsPosted()
    {
        const auto goOn = [] { QTimer::singleShot(1, [] { QCoreApplication::exit(kWentOn); }); };
        QMetaObject::invokeMethod(QCoreApplication::instance(), goOn, Qt::QueuedConnection);
    }
};

QTEST_MAIN(CloseWatcherTest)
#include "close_watcher_test.moc"
