// The home page while the folder of the page that was asked for is read.
#include "tests/window/dead_path.h"
#include "tests/window/job_in_program.h"

#include <QRandomGenerator>

class HomeScanTest : public JobInProgramTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        PrepareJobs();
        MakeVideo("a.mp4");
        MakeVideo("b.mp4");
        OpenWindow();
    }
    void cleanup()
    {
        DeadPath::Set(QString());
        QTRY_COMPARE(DeadPath::Waiting(), 0);
        FinishJobs();
    }

    void recordIsEnteredFromADeadFolder_data() { Entries(); }
    void recordIsEnteredFromADeadFolder()
    {
        SetDead();
        When(IsReading, [this] { Click(kRecord); });
        QElapsedTimer time;
        time.start();
        Click(Entry());
        QVERIFY2(time.elapsed() < 1000, qPrintable(QString("after %1 ms").arg(time.elapsed())));
        QCOMPARE(Page(), 1);
        DeadPath::Set(QString()); // what is read now comes too late
        QTRY_COMPARE(DeadPath::Waiting(), 0);
        QCoreApplication::processEvents();
        QCOMPARE(Page(), 1);
        Press("Back");
        Click(Entry());
        QCOMPARE(Page(), ItsPage());
        QCOMPARE(Table()->rowCount(), 2);
    }

    void recordIsEnteredFromAVideoThatCannotBeProbed_data() { Entries(); }
    void recordIsEnteredFromAVideoThatCannotBeProbed()
    {
        HangTheTool();
        When(IsToolAtWork, [this] { Click(kRecord); });
        QElapsedTimer time;
        time.start();
        Click(Entry());
        QVERIFY2(time.elapsed() < 1000, qPrintable(QString("after %1 ms").arg(time.elapsed())));
        QCOMPARE(Page(), 1);
        InstallTool(kVideoTool);
        Press("Back");
        Call("btnEditSlot");
        QCOMPARE(Child<QTableWidget>("m_pSourceVideoTable")->item(0, 2)->text(),
                 QString("00:00:30")); // the process is free again
    }

    void theOtherEntryIsEnteredInstead_data() { Entries(); }
    void theOtherEntryIsEnteredInstead()
    {
        SetDead();
        QList<int> pages;
        connect(Child<QStackedLayout>("m_pStack"), &QStackedLayout::currentChanged, this,
                [&](int page) { pages << page; });
        When(IsReading, [this] {
            DeadPath::Set(QString());
            Click(OtherEntry());
            QCOMPARE(Page(), 0); // not inside the slot that it leaves
        });
        Click(Entry());
        QCOMPARE(pages, QList<int>{ItsPage() == 2 ? 3 : 2});
        QCOMPARE(OtherTable()->rowCount(), 2);
    }

    void aSecondClickOnTheEntryDoesNotReadAgain_data() { Entries(); }
    void aSecondClickOnTheEntryDoesNotReadAgain()
    {
        SetDead();
        int clicks = 0;
        QTimer impatience;
        connect(&impatience, &QTimer::timeout, this, [&] {
            if (IsReading() && ++clicks <= 3) {
                Click(Entry());
            } else if (clicks > 3) {
                impatience.stop();
                QCOMPARE(DeadPath::Waiting(), 1);
                DeadPath::Set(QString());
            }
        });
        impatience.start(2);
        Click(Entry());
        QVERIFY2(clicks > 3, "the home page took no clicks");
        QCOMPARE(Page(), ItsPage());
        QCOMPARE(Table()->rowCount(), 2);
    }

    void theKeyboardLeavesTheScanToo_data() { Entries(); }
    void theKeyboardLeavesTheScanToo()
    {
        SetDead();
        QVERIFY(QTest::qWaitForWindowActive(&Window()));
        When(IsReading, [this] {
            Button(kRecord)->setFocus();
            QTest::keyClick(Window().windowHandle(), Qt::Key_Return);
        });
        Click(Entry());
        QCOMPARE(Page(), 1);
    }

    void thePointerTellsThatAPageIsComing_data() { Entries(); }
    void thePointerTellsThatAPageIsComing()
    {
        SetDead();
        Qt::CursorShape shape = Qt::ArrowCursor;
        When(IsReading, [&] {
            if (const QCursor* cursor = QGuiApplication::overrideCursor()) {
                shape = cursor->shape();
            }
            DeadPath::Set(QString());
        });
        Click(Entry());
        QCOMPARE(shape, Qt::BusyCursor);
        QVERIFY2(QGuiApplication::overrideCursor() == nullptr, "it stays");
    }

    // Ends in the page that was asked for last, and the table shows the folder, or nothing of it.
    void anyOrderOfClicksEndsOnThePageClickedLast()
    {
        const QByteArray given = qgetenv("LUMENFOLD_SEED");
        const quint32 seed =
            given.isEmpty() ? QRandomGenerator::global()->generate() : given.toUInt();
        qInfo("LUMENFOLD_SEED=%u", seed);
        QRandomGenerator random(seed);
        for (int round = 0; round < 30; ++round) {
            SetDead();
            const char* last = kTrim;
            int left = random.bounded(1, 6);
            QTimer hand;
            connect(&hand, &QTimer::timeout, this, [&] {
                if (--left > 0 && Page() == 0) {
                    last = random.bounded(2) == 0 ? kTrim : kMerge;
                    Click(last);
                } else {
                    DeadPath::Set(QString());
                }
            });
            hand.start(random.bounded(1, 5));
            Click(kTrim);
            hand.stop();
            DeadPath::Set(QString());
            QCOMPARE(Page(), last == kTrim ? 2 : 3);
            QCOMPARE(Child<QTableWidget>(last == kTrim ? "m_pCutVideoTable" : "m_pSourceVideoTable")
                         ->rowCount(),
                     2);
            Press("Back");
        }
    }

private:
    static constexpr auto kRecord = "The easiest";
    static constexpr auto kMerge = "Merge your";
    static constexpr auto kTrim = "Trim your";

    static void Entries()
    {
        QTest::addColumn<bool>("merge");
        QTest::newRow("trim") << false;
        QTest::newRow("merge") << true;
    }
    static bool IsMerge()
    {
        QFETCH(bool, merge);
        return merge;
    }
    static const char* Entry() { return IsMerge() ? kMerge : kTrim; }
    static const char* OtherEntry() { return IsMerge() ? kTrim : kMerge; }
    static int ItsPage() { return IsMerge() ? 3 : 2; }
    QTableWidget* Table()
    {
        return Child<QTableWidget>(IsMerge() ? "m_pSourceVideoTable" : "m_pCutVideoTable");
    }
    QTableWidget* OtherTable()
    {
        return Child<QTableWidget>(IsMerge() ? "m_pCutVideoTable" : "m_pSourceVideoTable");
    }
    void SetDead() { DeadPath::Set(SaveDirectory()); }
    static bool IsReading() { return DeadPath::Waiting() > 0; }

    QPushButton* Button(const QString& text)
    {
        for (auto* button : Window().findChildren<QPushButton*>()) {
            if (button->text().startsWith(text)) {
                return button;
            }
        }
        QTest::qFail("there is no such entry", __FILE__, __LINE__);
        return nullptr;
    }

    // As the window system would.
    void Click(const QString& text)
    {
        QPushButton* button = Button(text);
        QTest::mouseClick(Window().windowHandle(), Qt::LeftButton, {},
                          button->mapTo(&Window(), button->rect().center()));
    }
};

QTEST_MAIN(HomeScanTest)
#include "home_scan_test.moc"
