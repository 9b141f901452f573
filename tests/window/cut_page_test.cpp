#include "tests/window/job_tool.h"
#include "tests/window/pictures.h"

namespace {
constexpr auto kTable = "m_pCutVideoTable";
constexpr auto kField = "m_pLayout3DirEdit";
} // namespace

class CutPageTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
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
        QCOMPARE(PictureDifference("row 1", item->icon(), {16, 16}, "mp4.png"), QString());
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

    // The file is then not in the folder.
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
        const auto* item = Child<QTableWidget>(kTable)->item(0, 0);
        QCOMPARE(item->foreground().color(), QColor(Qt::white));
        QCOMPARE(PictureDifference("row 0", item->icon(), {16, 16}, "mp4.png"), QString());
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

    void leavingTheFieldReadsItsOwnFolderOnTheSamePage_data()
    {
        QTest::addColumn<QByteArray>("entry");
        QTest::addColumn<int>("page");
        QTest::newRow("home") << QByteArray("btnSlotBack") << 0;
        QTest::newRow("record") << QByteArray("btnSlot") << 1;
        QTest::newRow("cut") << QByteArray("btnMontageSlot") << 2;
        QTest::newRow("merge") << QByteArray("btnEditSlot") << 3;
    }

    // Wherever the field is left, even while another page is shown.
    void leavingTheFieldReadsItsOwnFolderOnTheSamePage()
    {
        QFETCH(QByteArray, entry);
        QFETCH(int, page);
        MakeVideo("in save.mp4");
        MakeVideo("new.mp4", "00:00:05", Target());
        MakeVideo("old.mp4", "00:00:05", Target());
        EnterCutPage();
        Call(entry.constData());
        QCOMPARE(Page(), page);
        Child<QLineEdit>(kField)->setText(Target());
        Leave(kField);
        QCOMPARE(Names(kTable), QStringList({"new.mp4", "old.mp4"}));
        QCOMPARE(Page(), page);
        Child<QLineEdit>(kField)->setText("/no/such/folder");
        Leave(kField);
        QCOMPARE(Names(kTable), QStringList());
        QCOMPARE(Page(), page);
    }

    void theFolderButtonDisablesTheMergePagesAdd()
    {
        MakeVideo("a.mp4");
        EnterMergePage();
        ClickRow("m_pSourceVideoTable", 0);
        QVERIFY(Enabled("Add"));
        Call("btnSlotLayout3Dir");
        QVERIFY(!Enabled("Add"));
        QCOMPARE(Page(), 3);
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
        EnterMergePage();
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
        QCOMPARE(Calls().size(), 1); // for the row itself
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
};

QTEST_MAIN(CutPageTest)
#include "cut_page_test.moc"
