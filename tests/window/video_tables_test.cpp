#include "tests/window/job_tool.h"

#include <QHeaderView>
#include <QScrollBar>

namespace {

struct VideoPage
{
    const char* entry;
    const char* table;
    const char* field;
    const char* folderButton;
};
constexpr VideoPage kCut{"btnMontageSlot", "m_pCutVideoTable", "m_pLayout3DirEdit",
                         "btnSlotLayout3Dir"};
constexpr VideoPage kMerge{"btnEditSlot", "m_pSourceVideoTable", "m_pLayout4DirEdit",
                           "btnSlotLayout4Dir"};

int Lightness(QRgb colour)
{
    return qGray(colour);
}

} // namespace

// How the video tables are painted, and what their empty areas do.
class VideoTablesTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { PrepareVideos(); }
    void cleanup() { FinishVideos(); }

    void theRowsFillTheTable_data()
    {
        QTest::addColumn<bool>("merge");
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("second");
        for (const bool merge : {false, true}) {
            for (const auto& [first, second] :
                 {std::pair(0, 2), {2, 0}, {2, 3}, {2, 20}, {20, 2}, {13, 14}, {20, 20}}) {
                QTest::addRow("%s: %d videos, then %d", merge ? "merge" : "cut", first, second)
                    << merge << first << second;
            }
        }
    }

    // On entering, after typing another folder and the first one again, and on the second visit,
    // with a scroll bar (13 videos or more) and without.
    void theRowsFillTheTable()
    {
        QFETCH(bool, merge);
        QFETCH(int, first);
        QFETCH(int, second);
        const VideoPage& page = merge ? kMerge : kCut;
        MakeVideos(first, SaveDirectory());
        MakeVideos(second, Target());
        Enter(page);
        ExpectFilled(page, "on entering");
        for (const QString& folder : {Target(), SaveDirectory()}) {
            Child<QLineEdit>(page.field)->setText(folder);
            Leave(page.field);
            ExpectFilled(page, "after a folder was typed");
        }
        Call(page.folderButton);
        ExpectFilled(page, "after a folder was chosen");
        Press("Back");
        Call(page.entry);
        ExpectFilled(page, "on the second visit");
    }

    void aNameLongerThanTheTableCanBeScrolled()
    {
        MakeVideo(QString(90, 'n') + ".mp4");
        MakeVideo("short.mp4", "00:00:05", Target());
        Enter(kCut);
        const auto* table = Child<QTableWidget>(kCut.table);
        auto* bar = table->horizontalScrollBar();
        QTRY_VERIFY2(bar->isVisible(), "on entering the end of the name cannot be seen");
        bar->setValue(bar->maximum());
        constexpr int gridLine = 1;
        QCOMPARE(table->visualItemRect(table->item(0, 0)).right() + gridLine,
                 table->viewport()->rect().right());
        Child<QLineEdit>(kCut.field)->setText(Target());
        Leave(kCut.field);
        QTRY_VERIFY2(!bar->isVisible(), "the bar stays though every name fits");
        Child<QLineEdit>(kCut.field)->setText(SaveDirectory());
        Leave(kCut.field);
        QTRY_VERIFY2(bar->isVisible(), "typed, the end of the name cannot be seen");
    }

    void aPressRightOfAShortNameSelectsItsRow()
    {
        MakeVideo("a.mp4", "00:00:05", Target());
        Enter(kCut);
        Child<QLineEdit>(kCut.field)->setText(Target());
        Leave(kCut.field);
        auto* table = Child<QTableWidget>(kCut.table);
        const int y = table->visualItemRect(table->item(0, 0)).center().y();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                          QPoint(table->viewport()->width() - 5, y));
        QCOMPARE(table->selectedItems().size(), 1);
        QVERIFY(Enabled("Start"));
    }

    void withNothingSelectedAllRowsLookAlike_data()
    {
        QTest::addColumn<bool>("merge");
        QTest::newRow("cut") << false;
        QTest::newRow("merge") << true;
    }

    void withNothingSelectedAllRowsLookAlike()
    {
        QFETCH(bool, merge);
        const VideoPage& page = merge ? kMerge : kCut;
        MakeVideos(2, SaveDirectory());
        Enter(page);
        auto* table = Child<QTableWidget>(page.table);
        QTRY_COMPARE(QApplication::focusWidget(), table);
        QVERIFY(table->selectedItems().isEmpty());
        QCOMPARE(Picture(table, 0), Picture(table, 1));
        ClickRow(page.table, 0);
        QVERIFY2(Picture(table, 0) != Picture(table, 1), "the selected row looks like the other");
    }

    void theSelectedRowIsDrawnAsOne()
    {
        MakeVideos(2, SaveDirectory());
        Enter(kMerge);
        ClickRow(kMerge.table, 0);
        auto* table = Child<QTableWidget>(kMerge.table);
        const QImage picture = table->viewport()->grab().toImage();
        const int y = table->visualItemRect(table->item(0, 0)).top() + 3; // above the text
        for (int column = 1; column < 3; ++column) {
            const int x = table->visualItemRect(table->item(0, column)).center().x();
            QCOMPARE(
                QColor(picture.pixel(x, y)),
                QColor(picture.pixel(table->visualItemRect(table->item(0, 0)).right() - 3, y)));
        }
    }

    void theFirstArrowKeySelectsTheFirstRow()
    {
        MakeVideos(3, SaveDirectory());
        Enter(kCut);
        auto* table = Child<QTableWidget>(kCut.table);
        QTRY_COMPARE(QApplication::focusWidget(), table);
        QTest::keyClick(table, Qt::Key_Down);
        QCOMPARE(table->selectedItems().size(), 1);
        QCOMPARE(table->selectedItems().first()->row(), 0);
        QVERIFY(Enabled("Start"));
        QTest::keyClick(table, Qt::Key_Down);
        QCOMPARE(table->selectedItems().first()->row(), 1);
    }

    // A light handle on a groove slightly lighter than the page: no black and white boxes.
    void theCutTablesScrollBarsLookLikeScrollBars_data()
    {
        QTest::addColumn<bool>("horizontal");
        QTest::newRow("vertical") << false;
        QTest::newRow("horizontal") << true;
    }

    void theCutTablesScrollBarsLookLikeScrollBars()
    {
        QFETCH(bool, horizontal);
        if (horizontal) {
            MakeVideo(QString(60, 'n') + ".mp4", "00:00:05", Target());
        } else {
            MakeVideos(30, Target());
        }
        Enter(kCut);
        Child<QLineEdit>(kCut.field)->setText(Target());
        Leave(kCut.field);
        auto* table = Child<QTableWidget>(kCut.table);
        QScrollBar* bar = horizontal ? table->horizontalScrollBar() : table->verticalScrollBar();
        QTRY_VERIFY(bar->isVisible());
        QCOMPARE(bar->value(), 0);
        const QImage picture = bar->grab().toImage();
        const auto at = [&](int along, int across) {
            return Lightness(horizontal ? picture.pixel(along, across)
                                        : picture.pixel(across, along));
        };
        const int length = horizontal ? picture.width() : picture.height();
        const int middle = (horizontal ? picture.height() : picture.width()) / 2;
        const int groove = at(length - 4, middle);
        QVERIFY2(groove > 51 && groove < 110, qPrintable(QString("groove: %1").arg(groove)));
        const int handle = at(20, middle);
        QVERIFY2(handle > groove + 60, qPrintable(QString("handle: %1").arg(handle)));
        for (int along = 0; along < length; ++along) {
            const int lightness = at(along, middle);
            QVERIFY2(lightness >= groove && lightness <= handle,
                     qPrintable(QString("lightness %1 at %2").arg(lightness).arg(along)));
        }
    }

private:
    void MakeVideos(int count, const QString& folder)
    {
        for (int i = 0; i < count; ++i) {
            MakeVideo(QString::number(i % 10) + QString(i / 10, 'x') + ".mp4", "00:00:05", folder);
        }
    }

    void Enter(const VideoPage& page)
    {
        OpenWindow();
        Call(page.entry);
        QVERIFY(QTest::qWaitForWindowActive(&Window()));
    }

    void ExpectFilled(const VideoPage& page, const char* when)
    {
        const auto* table = Child<QTableWidget>(page.table);
        QCoreApplication::processEvents(); // scroll bars appear and disappear with the next layout
        QVERIFY2(table->horizontalHeader()->length() == table->viewport()->width(),
                 qPrintable(QString("%1: the columns take %2 of %3")
                                .arg(when)
                                .arg(table->horizontalHeader()->length())
                                .arg(table->viewport()->width())));
    }

    // A row without its text, where the two differ.
    static QImage Picture(QTableWidget* table, int row)
    {
        const QRect icon = table->visualItemRect(table->item(row, 0));
        return table->viewport()->grab(QRect(0, icon.top() + 1, 24, icon.height() - 2)).toImage();
    }
};

QTEST_MAIN(VideoTablesTest)
#include "video_tables_test.moc"
