#include "tests/window/job_tool.h"

#include <QHeaderView>
#include <QProcess>

namespace {
constexpr auto kTable = "m_pCutTable";
constexpr auto kField = "m_pLayout3DirEdit";
} // namespace

class CutPageTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
    void init() { PrepareVideos(); }
    void cleanup() { FinishVideos(); }

    void theTrimEntryListsEveryVideoNewestFirst()
    {
        MakeVideo("new.mp4");
        MakeVideo("middle.mp4");
        MakeVideo("old.mp4");
        EnterCutPage();
        QCOMPARE(Names(kTable), QStringList({"new.mp4", "middle.mp4", "old.mp4"}));
        const auto* item = Child<QTableWidget>(kTable)->item(1, 0);
        QCOMPARE(item->foreground().color(), QColor(255, 255, 255, 255));
        QVERIFY(!item->icon().isNull());
        QCOMPARE(Page(), 2);
    }

    void everyVideoIsProbedOnce()
    {
        MakeVideo("a b.mp4");
        MakeVideo("c.mp4");
        EnterCutPage();
        QCOMPARE(Calls(), QStringList({"<-i><" + SaveDirectory() + "/a b.mp4>",
                                       "<-i><" + SaveDirectory() + "/c.mp4>"}));
    }

    void theTrimEntryReadsTheMergePagesFolder()
    {
        MakeVideo("in save.mp4");
        MakeVideo("elsewhere.mp4", "00:00:05", Target());
        OpenWindow();
        Child<QLineEdit>("m_pLayout4DirEdit")->setText(Target());
        Call("btnMontageSlot");
        QCOMPARE(Names(kTable), QStringList{"elsewhere.mp4"});
        QCOMPARE(Child<QLineEdit>(kField)->text(), SaveDirectory());
    }

    // The file is then one that the folder does not hold.
    void aVideoIsLookedForInTheFolderOfTheField()
    {
        MakeVideo("elsewhere.mp4", "00:00:05", Target());
        OpenWindow();
        Child<QLineEdit>("m_pLayout4DirEdit")->setText(Target());
        Call("btnMontageSlot");
        Calls();
        ClickRow(kTable, 0);
        QCOMPARE(Calls(), QStringList{"<-i><" + SaveDirectory() + "/elsewhere.mp4>"});
    }

    void theFolderButtonFillsOnlyTheFirstRowWithTheOldest()
    {
        for (const char* name : {"new.mp4", "middle.mp4", "old.mp4"}) {
            MakeVideo(name, "00:00:05", Target());
        }
        EnterCutPage();
        Call("btnSlotLayout3Dir");
        QCOMPARE(Child<QLineEdit>(kField)->text(), Target());
        QCOMPARE(Names(kTable), QStringList({"old.mp4", "-", "-"}));
        QCOMPARE(Child<QTableWidget>(kTable)->item(0, 0)->foreground().color(), QColor(Qt::white));
    }

    void theFolderButtonProbesNothing()
    {
        MakeVideo("a.mp4", "00:00:05", Target());
        EnterCutPage();
        QCOMPARE(Calls(), QStringList());
        Call("btnSlotLayout3Dir");
        QCOMPARE(Names(kTable), QStringList{"a.mp4"});
        QCOMPARE(Calls(), QStringList());
    }

    void aCancelledChooserEmptiesTheFieldAndListsTheRoot()
    {
        MakeVideo("a.mp4");
        EnterCutPage();
        Boxes().directory = QString();
        QTest::ignoreMessage(QtDebugMsg, "\"/\"");
        Call("btnSlotLayout3Dir");
        QCOMPARE(Boxes().choosers, 1);
        QCOMPARE(Child<QLineEdit>(kField)->text(), QString());
        QCOMPARE(Names(kTable).size(), QDir("/").entryList({"*.mp4"}, QDir::Files).size());
    }

    void leavingTheFieldReadsItsOwnFolderOnTheSamePage()
    {
        MakeVideo("in save.mp4");
        MakeVideo("new.mp4", "00:00:05", Target());
        MakeVideo("old.mp4", "00:00:05", Target());
        EnterCutPage();
        Child<QLineEdit>(kField)->setText(Target());
        Leave(kField);
        QCOMPARE(Names(kTable), QStringList({"new.mp4", "old.mp4"}));
        QCOMPARE(Page(), 2);
        Child<QLineEdit>(kField)->setText("/no/such/folder");
        Leave(kField);
        QCOMPARE(Names(kTable), QStringList());
    }

    void leavingAnEmptyFieldReadsNothing()
    {
        MakeVideo("a.mp4");
        EnterCutPage();
        Child<QLineEdit>(kField)->clear();
        Leave(kField);
        QCOMPARE(Names(kTable), QStringList{"a.mp4"});
    }

    void leavingTheFieldDisablesTheMergePagesAdd_data()
    {
        QTest::addColumn<QByteArray>("field");
        QTest::addColumn<bool>("empty");
        QTest::newRow("cut field") << QByteArray(kField) << false;
        QTest::newRow("empty cut field") << QByteArray(kField) << true;
        QTest::newRow("merge field") << QByteArray("m_pLayout4DirEdit") << false;
        QTest::newRow("empty merge field") << QByteArray("m_pLayout4DirEdit") << true;
    }

    void leavingTheFieldDisablesTheMergePagesAdd()
    {
        QFETCH(QByteArray, field);
        QFETCH(bool, empty);
        MakeVideo("a.mp4");
        OpenWindow();
        Call("btnEditSlot");
        ClickRow("m_pSourceVideoTable", 0);
        QVERIFY(Enabled("Add"));
        if (empty) {
            Child<QLineEdit>(field.constData())->clear();
        }
        Leave(field.constData());
        QVERIFY(!Enabled("Add"));
    }

    void theFieldIsLeftByAClickOnTheTable()
    {
        MakeVideo("a.mp4", "00:00:05", Target());
        EnterCutPage();
        QVERIFY(QTest::qWaitForWindowActive(&Window()));
        auto* field = Child<QLineEdit>(kField);
        field->setFocus();
        field->setText(Target());
        QTest::mouseClick(Child<QTableWidget>(kTable)->viewport(), Qt::LeftButton);
        QCOMPARE(Names(kTable), QStringList{"a.mp4"});
    }

    void enteringThePagePutsTheCursorNotIntoTheField()
    {
        MakeVideo("a.mp4");
        OpenWindow();
        QVERIFY(QTest::qWaitForWindowActive(&Window()));
        Press("Trim your capturing screen video by setting the start time\nand end time");
        QCOMPARE(QApplication::focusWidget(), Child<QTableWidget>(kTable));
        Calls();
        ClickRow(kTable, 0);
        QCOMPARE(Calls().size(), 1); // of the row itself
    }

    void theEnableChainOfTheButtons()
    {
        MakeVideo("a.mp4");
        EnterCutPage();
        QCOMPARE(EnabledButtons(), QString("Cut")); // before a video is selected, and only then
        ClickRow(kTable, 0);
        QCOMPARE(EnabledButtons(), QString("Play Start"));
        Call("btnSetHead");
        QCOMPARE(EnabledButtons(), QString("Play Start End"));
        Call("btnSetTail");
        QCOMPARE(EnabledButtons(), QString("Play Start End Cut"));
        ClickRow(kTable, 0);
        QCOMPARE(EnabledButtons(), QString("Play Start"));
    }

    void withoutASelectionPlayAndCutGoOff()
    {
        MakeVideo("a.mp4");
        EnterCutPage();
        ClickRow(kTable, 0);
        Call("btnSetHead");
        Call("btnSetTail");
        Child<QTableWidget>(kTable)->clearSelection();
        QMetaObject::invokeMethod(&Window(), "CutTableItemClick",
                                  Q_ARG(QTableWidgetItem*, nullptr));
        QCOMPARE(EnabledButtons(), QString("Start End"));
    }

    void selectingAVideoShowsItsLengthAndResetsTheMarks()
    {
        MakeVideo("a.mp4", "01:02:03");
        EnterCutPage();
        ClickRow(kTable, 0);
        auto* slider = Child<QSlider>("m_pCutSlider");
        QCOMPARE(slider->minimum(), 0);
        QCOMPARE(slider->maximum(), 3723);
        QCOMPARE(slider->value(), 0);
        QCOMPARE(Position(), QString("00:00:00/01:02:03"));
        QCOMPARE(Marks(), QString("00:00 00:00"));
        Move(61);
        Call("btnSetHead");
        Move(3600);
        Call("btnSetTail");
        QCOMPARE(Position(), QString("01:00:00/01:02:03"));
        QCOMPARE(Marks(), QString("00:01:01 01:00:00"));
        ClickRow(kTable, 0);
        QCOMPARE(Marks(), QString("00:00 00:00"));
        QCOMPARE(slider->value(), 0);
    }

    // The slider goes back to 0; the position that the label and Start read does not.
    void startTakesThePositionOfThePreviousVideo()
    {
        MakeVideo("a.mp4", "00:00:30");
        MakeVideo("b.mp4", "00:00:10");
        EnterCutPage();
        ClickRow(kTable, 0);
        Call("btnSetHead");
        QCOMPARE(Marks(), QString("00:00:00 00:00")); // never moved reads as 0
        Move(25);
        ClickRow(kTable, 1);
        QCOMPARE(Position(), QString("00:00:25/00:00:10"));
        Call("btnSetHead");
        QCOMPARE(Marks(), QString("00:00:25 00:00"));
    }

    void aLengthThatCannotBeReadCountsWhatIsThere_data()
    {
        QTest::addColumn<QByteArray>("duration");
        QTest::addColumn<int>("seconds");
        QTest::addColumn<QString>("position");
        QTest::newRow("N/A") << QByteArray("N/A, start") << 0 << "00:00:00/N/A, sta";
        QTest::newRow("100 hours") << QByteArray("100:00:05") << 360000 << "00:00:00/100:00:0";
        QTest::newRow("half a second") << QByteArray("00:00:00") << 0 << "00:00:00/00:00:00";
    }

    void aLengthThatCannotBeReadCountsWhatIsThere()
    {
        QFETCH(QByteArray, duration);
        MakeVideo("a.mp4", duration);
        EnterCutPage();
        ClickRow(kTable, 0);
        QTEST(Child<QSlider>("m_pCutSlider")->maximum(), "seconds");
        QTEST(Position(), "position");
    }

    void withoutAToolALengthIsZero()
    {
        MakeVideo("a.mp4");
        EnterCutPage();
        QFile::remove(BesideProgram("tool"));
        ClickRow(kTable, 0);
        QCOMPARE(Child<QSlider>("m_pCutSlider")->maximum(), 0);
        QCOMPARE(Position(), QString("00:00:00/"));
    }

    void draggingTheSliderMovesThePosition()
    {
        MakeVideo("a.mp4", "00:01:40");
        EnterCutPage();
        ClickRow(kTable, 0);
        auto* slider = Child<QSlider>("m_pCutSlider");
        QTest::mousePress(slider, Qt::LeftButton, {}, slider->rect().center());
        QCOMPARE(Position(), QString("00:00:50/00:01:40"));
        QTest::mouseMove(slider, slider->rect().topRight());
        QTRY_COMPARE(Position(), QString("00:01:40/00:01:40"));
        QTest::mouseRelease(slider, Qt::LeftButton, {}, slider->rect().topRight());
        QCOMPARE(slider->value(), 100);
    }

    void theKeyboardMovesThePositionToo()
    {
        MakeVideo("a.mp4", "00:01:40");
        EnterCutPage();
        ClickRow(kTable, 0);
        auto* slider = Child<QSlider>("m_pCutSlider");
        QTest::keyClick(slider, Qt::Key_Right);
        QCOMPARE(Position(), QString("00:00:01/00:01:40"));
        QTest::keyClick(slider, Qt::Key_PageUp);
        QCOMPARE(Position(), QString("00:00:11/00:01:40"));
        Call("btnSetHead");
        QCOMPARE(Marks(), QString("00:00:11 00:00"));
    }

    void settingTheSlidersValueIsNoMove()
    {
        MakeVideo("a.mp4");
        EnterCutPage();
        ClickRow(kTable, 0);
        Child<QSlider>("m_pCutSlider")->setValue(12);
        QCOMPARE(Position(), QString("00:00:00/00:00:30"));
    }

    void playAndADoubleClickDoNothing()
    {
        MakeVideo("a.mp4");
        EnterCutPage();
        ClickRow(kTable, 0);
        Calls();
        Press("Play");
        QMetaObject::invokeMethod(&Window(), "CutTableItemDoubleClick",
                                  Q_ARG(QTableWidgetItem*, nullptr));
        QCOMPARE(Calls(), QStringList());
        QCOMPARE(EnabledButtons(), QString("Play Start"));
    }

    void aMoveSeeksInThePlayer()
    {
        MakeVideo("a.mp4");
        EnterCutPage();
        ClickRow(kTable, 0);
        const QString keys = Target() + "/keys";
        auto* player = Child<QProcess>("m_pPlayerProcess");
        player->start("/bin/sh", {"-c", "cat >\"$0\"", keys});
        QVERIFY(player->waitForStarted());
        Move(17);
        QTRY_COMPARE(ReadFile(keys), QByteArray("-ss 17 \r\np\r\n"));
    }

    void thePlayersDurationSetsTheRange()
    {
        MakeVideo("a.mp4");
        EnterCutPage();
        ClickRow(kTable, 0);
        Move(7);
        auto* player = Child<QProcess>("m_pPlayerProcess");
        player->start("/bin/echo", {"x Duration: 00:02:03.99, start"});
        QTRY_COMPARE(Child<QSlider>("m_pCutSlider")->maximum(), 123);
        QCOMPARE(Position(), QString("00:00:07/00:02:03"));
    }

    void backEndsThePreviewAndRewindsTheSlider()
    {
        MakeVideo("a.mp4");
        EnterCutPage();
        ClickRow(kTable, 0);
        Move(12);
        auto* player = Child<QProcess>("m_pPlayerProcess");
        player->start("/bin/cat", QStringList());
        QVERIFY(player->waitForStarted());
        Press("Back");
        QCOMPARE(Child<QSlider>("m_pCutSlider")->value(), 0);
        QTRY_COMPARE(player->state(), QProcess::NotRunning);
        QCOMPARE(Page(), 0);
    }

    void textsStylesAndSizes()
    {
        EnterCutPage();
        auto* help = Child<QLabel>("m_pCutHelp");
        QCOMPARE(help->text(),
                 QString("\n\n\n\n\n\t\t1.Select the video in the list on the left\n\n\t\t2.Move "
                         "the slider to set \"Start\" and \"End\"\n\n\t\t3.Select \"Cut\" to save "
                         "the cut video."));
        QCOMPARE(help->font().pointSize(), 17);
        QCOMPARE(help->minimumSize(), QSize(700, 300));
        QVERIFY(help->alignment().testFlag(Qt::AlignLeft));
        auto* table = Child<QTableWidget>(kTable);
        QCOMPARE(table->columnCount(), 1);
        QCOMPARE(table->horizontalHeaderItem(0)->text(), QString());
        QCOMPARE(table->minimumSize(), QSize(200, 100));
        QCOMPARE(table->selectionMode(), QAbstractItemView::SingleSelection);
        QCOMPARE(table->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(table->editTriggers(), QAbstractItemView::NoEditTriggers);
        QVERIFY(!table->verticalHeader()->isVisibleTo(table));
        auto* field = Child<QLineEdit>(kField);
        QCOMPARE(field->styleSheet(), QString("border: 2px groove white;"));
        QCOMPARE(field->font().pointSize(), 12);
        QVERIFY(field->font().bold());
        QCOMPARE(field->cursorPosition(), 1);
    }

    void theSlidersStyleKeepsItsTabs()
    {
        EnterCutPage();
        const QString sheet = Child<QSlider>("m_pCutSlider")->styleSheet();
        QCOMPARE(sheet.count(QString(8, '\t') + "QSlider::"), 3);
        QVERIFY(sheet.startsWith("QSlider::groove:horizontal{border: 1px solid #4A708B;background: "
                                 "#C0C0C0;height: 5px;border-radius: 1px;padding-left:-1px;"
                                 "padding-right:-1px;}"));
        QVERIFY(sheet.endsWith("QSlider::handle:horizontal:disabled{background: #eee;border: 1px "
                               "solid #aaa;border-radius: 4px;}"));
    }

    void nothingIsCutOffOrOverlaps()
    {
        MakeVideo("a.mp4", "00:00:30");
        EnterCutPage();
        ClickRow(kTable, 0);
        auto* page = Child<QWidget>("m_pLayout3Widget");
        QRegion taken;
        for (auto* widget : page->findChildren<QWidget*>()) {
            const bool shown = qobject_cast<QPushButton*>(widget) != nullptr ||
                               (qobject_cast<QLabel*>(widget) != nullptr &&
                                !static_cast<QLabel*>(widget)->text().isEmpty());
            if (!shown || TextOf(widget).contains("by Tarvessa")) { // wider than the window
                continue;
            }
            const QRect place(widget->mapTo(&Window(), QPoint()), widget->size());
            QVERIFY2(Window().rect().contains(place),
                     qPrintable("reaches out of the window: " + TextOf(widget)));
            QVERIFY2(widget->width() >= widget->sizeHint().width() || IsIcon(widget),
                     qPrintable("cut off: " + TextOf(widget)));
            QVERIFY2(widget->height() >= widget->minimumSizeHint().height() || IsIcon(widget),
                     qPrintable("cut off: " + TextOf(widget)));
            QVERIFY2(!taken.intersects(place), qPrintable("overlaps: " + TextOf(widget)));
            taken += place;
        }
        QVERIFY(!taken.isEmpty());
        auto* table = Child<QTableWidget>(kTable);
        QVERIFY2(table->mapTo(page, table->rect().bottomRight()).x() <
                     Child<QSlider>("m_pCutSlider")->mapTo(page, QPoint()).x(),
                 "the table is not left of the slider");
    }

private:
    void EnterCutPage()
    {
        OpenWindow();
        Call("btnMontageSlot");
    }

    static bool IsIcon(const QWidget* widget)
    {
        const auto* button = qobject_cast<const QPushButton*>(widget);
        return button != nullptr && button->text().isEmpty();
    }

    static QString TextOf(const QWidget* widget)
    {
        const auto* button = qobject_cast<const QPushButton*>(widget);
        return button != nullptr ? button->text() : static_cast<const QLabel*>(widget)->text();
    }

    void Move(int seconds)
    {
        QVERIFY(QMetaObject::invokeMethod(&Window(), "current", Q_ARG(int, seconds)));
    }

    QString Position() { return Child<QLabel>("m_pCutPosLabel")->text(); }
    QString Marks()
    {
        return Child<QLabel>("m_pHeadLabel")->text() + ' ' + Child<QLabel>("m_pTailLabel")->text();
    }

    QString EnabledButtons()
    {
        QStringList enabled;
        for (const char* text : {"Play", "Start", "End", "Cut"}) {
            if (Enabled(text)) {
                enabled << text;
            }
        }
        return enabled.join(' ');
    }
};

QTEST_MAIN(CutPageTest)
#include "cut_page_test.moc"
