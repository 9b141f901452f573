#include "tests/window/job_tool.h"
#include "tests/window/page_looks.h"

// The tables for the cut and merge pages.
namespace {
constexpr PageShape kCut{1000, 100, true, true};
constexpr PageShape kMerge{1000, 100, true, false};
const QString kButton = GreyButtonStyle("\t\t\t\t\t\t\t\t   ");
} // namespace

class VideoPagesLookTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        PrepareVideos();
        OpenWindow();
    }
    void cleanup() { FinishVideos(); }

    void theCutPage()
    {
        auto* page = Child<QWidget>("m_pLayout3Widget");
        QList<Look> looks = Header(page, kCut) + Footer(page, kCut) + CutMiddle(page);
        struct Button
        {
            QString text;
            QString picture;
            QString slot;
            bool enabled;
        };
        // Cut is enabled until a video is selected.
        for (const Button& button : {Button{"Back", {}, "btnSlotBack()", true},
                                     {"Play", "play.png", "btnLayout3Play()", false},
                                     {"Start", {}, "btnSetHead()", false},
                                     {"End", {}, "btnSetTail()", false},
                                     {"Cut", "cut.png", "btnSlotLayout3Cut()", true}}) {
            looks << Look{.what = button.text,
                          .widget = ButtonReading(page, button.text),
                          .parent = page,
                          .fixed = {100, 35},
                          .font = "Calibri 12 bold",
                          .style = kButton,
                          .picture = button.picture,
                          .calls = {"clicked() > " + button.slot},
                          .cursor = Qt::PointingHandCursor,
                          .flat = true,
                          .enabled = button.enabled};
        }
        for (const char* mark : {"m_pHeadLabel", "m_pTailLabel"}) {
            looks << Look{.what = mark,
                          .widget = Child<QLabel>(mark),
                          .parent = page,
                          .minimum = {80, 0},
                          .font = "Calibri 12 bold",
                          .text = "00:00",
                          .colour = kWhite};
        }
        Expect(Differences("cut page", looks));
        Expect(LayoutDifferences("cut page", page->layout(), looks,
                                 {"column, spacing 0", "  column",
                                  "    header strip",  "    separator",
                                  "  space 6",         "  row, margins 20 0 20 0",
                                  "    directory row", "    space 355",
                                  "  space 8",         "  row, margins 20 0 20 0 [1]",
                                  "    cut table",     "    space 8",
                                  "    panel",         "  row, margins 20 6 20 6, spacing 10",
                                  "    Back",          "    space 150",
                                  "    Play",          "    stretch 1",
                                  "    Start",         "    m_pHeadLabel",
                                  "    space 10",      "    End",
                                  "    m_pTailLabel",  "    stretch 1",
                                  "    Cut",           "  footer"}));
        QWidget* panel = HolderOf(Child<QLabel>("m_pCutHelp"));
        Expect(LayoutDifferences("cut page's panel", panel->layout(), looks,
                                 {"column, spacing 0", "  help text", "  stretch 0",
                                  "  column, margins 20 0 20 14", "    position", "    space 4",
                                  "    slider"}));
    }

    void theMergePage()
    {
        auto* page = Child<QWidget>("m_pLayout4Widget");
        QList<Look> looks =
            Header(page, kMerge) + Footer(page, kMerge) + FolderRow(page) + MergeTables(page);
        QWidget* bar = HolderOf(Child<QPushButton>("m_pBtnMerge"));
        looks << Look{.what = "button bar", .widget = bar, .parent = page, .minimum = {1000, 40}};
        looks << BarButton(page, "Back", {20, 2, 100, 35}, "btnSlotBack()");
        looks << BarButton(page, "Merge", {820, 2, 100, 35}, "btnSlotLayout4Merge()");
        for (auto button = looks.end() - 2; button != looks.end(); ++button) {
            button->font = "Calibri 11 bold";
            button->enabled = button->what == "Back";
        }
        Expect(Differences("merge page", looks));
        Expect(LayoutDifferences("merge page", page->layout(), looks,
                                 {"column, spacing 0", "  column",
                                  "    header strip",  "    separator",
                                  "  space 3",         "  row, margins 20 0 20 0",
                                  "    directory row", "    space 550",
                                  "  space 2",         "  row, margins 20 0 20 0",
                                  "    source table",  "    space 4",
                                  "    column",        "      stretch 5",
                                  "      Add",         "      stretch 5",
                                  "    space 4",       "    target table",
                                  "    space 4",       "    column",
                                  "      stretch 5",   "      Up",
                                  "      space 4",     "      Down",
                                  "      space 4",     "      Delete",
                                  "      stretch 5",   "  space 4",
                                  "  column",          "    button bar",
                                  "    footer"}));
    }

private:
    // Everything between the cut page's header and its buttons.
    QList<Look> CutMiddle(QWidget* page)
    {
        auto* field = Child<QLineEdit>("m_pLayout3DirEdit");
        auto* help = Child<QLabel>("m_pCutHelp");
        QList<Look> looks;
        looks << Look{.what = "panel", .widget = HolderOf(help), .parent = page, .style = kGrey};
        looks << Look{.what = "directory caption",
                      .widget = LabelReading(page, "Video directory: "),
                      .parent = HolderOf(field),
                      .font = "Calibri 12 bold"};
        looks << Look{
            .what = "directory row", .widget = HolderOf(field), .parent = page, .style = kGrey};
        looks << Look{.what = "directory",
                      .widget = field,
                      .font = "Calibri 12 bold",
                      .text = SaveDirectory(),
                      .style = kField,
                      .textCursor = 1};
        looks << Look{.what = "folder button",
                      .widget = ButtonNamed(page, "Choose directory"),
                      .parent = HolderOf(field),
                      .place = {565, 0, 30, 25},
                      .text = "",
                      .picture = "folder.png",
                      .calls = {"clicked() > btnSlotLayout3Dir()"},
                      .cursor = Qt::PointingHandCursor};
        looks << Look{.what = "cut table",
                      .widget = Child<QTableWidget>("m_pCutVideoTable"),
                      .parent = page,
                      .minimum = {200, 100},
                      .font = "Calibri 11",
                      .table =
                          "columns , first 180 wide, last stretched, labels left, no row "
                          "numbers, whole rows, one, fixed, names on one line, header Calibri 11",
                      .calls = {"itemClicked(QTableWidgetItem*) > "
                                "CutTableItemClick(QTableWidgetItem*)",
                                "itemDoubleClicked(QTableWidgetItem*) > "
                                "CutTableItemDoubleClick(QTableWidgetItem*)"}};
        looks << Look{.what = "help text",
                      .widget = help,
                      .minimum = {700, 300},
                      .font = "Calibri 17",
                      .text = "\n\n\n\n\n\t\t1.Select the video in the list on the left\n\n"
                              "\t\t2.Move the slider to set \"Start\" and \"End\"\n\n"
                              "\t\t3.Select \"Cut\" to save the cut video.",
                      .alignment = Qt::AlignLeft};
        looks << Look{.what = "position",
                      .widget = Child<QLabel>("m_pCutPosLabel"),
                      .parent = HolderOf(help),
                      .font = "Calibri 12 bold",
                      .text = "00:00:00/00:00:00",
                      .alignment = Qt::AlignRight};
        looks << Look{.what = "slider",
                      .widget = Child<QSlider>("m_pCutSlider"),
                      .parent = HolderOf(help),
                      .style = SliderStyle(),
                      .calls = {"sliderMoved(int) > current(int)"}};
        return looks;
    }

    // Three gaps between its rules are tabs.
    static QString SliderStyle()
    {
        const QString gap = "\t\t\t\t\t\t\t\t";
        return "QSlider::groove:horizontal{border: 1px solid #4A708B;background: #C0C0C0;height: "
               "5px;border-radius: 1px;padding-left:-1px;padding-right:-1px;}" +
               gap +
               "QSlider::sub-page:horizontal{background: qlineargradient(x1:0, y1:0, x2:0, "
               "y2:1,stop:0 #B1B1B1, stop:1 #c4c4c4);background: qlineargradient(x1: 0, y1: 0.2, "
               "x2: 1, y2: 1,stop: 0 #5DCCFF, stop: 1 #1874CD);border: 1px solid "
               "#4A708B;height: 10px;border-radius: 2px;}" +
               gap +
               "QSlider::add-page:horizontal{background: #575757;border: 0px solid #777;height: "
               "10px;border-radius: 2px;}" +
               gap +
               "QSlider::handle:horizontal{background: qradialgradient(spread:pad, cx:0.5, "
               "cy:0.5, radius:0.5, fx:0.5, fy:0.5,stop:0.6 #45ADED, stop:0.778409 rgba(255, "
               "255, 255, 255));width: 11px;margin-top: -3px;margin-bottom: "
               "-3px;border-radius: 5px;}"
               "QSlider::handle:horizontal:hover{background: qradialgradient(spread:pad, cx:0.5, "
               "cy:0.5, radius:0.5, fx:0.5, fy:0.5, stop:0.6 #2A8BDA,stop:0.778409 rgba(255, "
               "255, 255, 255));width: 11px;margin-top: -3px;margin-bottom: "
               "-3px;border-radius: 5px;}"
               "QSlider::sub-page:horizontal:disabled{background: #00009C;border-color: #999;}"
               "QSlider::add-page:horizontal:disabled{background: #eee;border-color: #999;}"
               "QSlider::handle:horizontal:disabled{background: #eee;border: 1px solid "
               "#aaa;border-radius: 4px;}";
    }

    QList<Look> FolderRow(QWidget* page)
    {
        auto* field = Child<QLineEdit>("m_pLayout4DirEdit");
        QWidget* row = HolderOf(field);
        QList<Look> looks;
        looks << Look{.what = "directory row",
                      .widget = row,
                      .parent = page,
                      .minimum = {300, 25},
                      .style = kGrey};
        looks << Look{.what = "directory caption",
                      .widget = LabelReading(page, "Video directory: "),
                      .parent = row,
                      .place = {10, 0, 100, 25},
                      .font = "Calibri 11 bold"};
        looks << Look{.what = "directory",
                      .widget = field,
                      .place = {120, 0, 240, 25},
                      .font = "Calibri 11 bold",
                      .text = SaveDirectory(),
                      .style = kField,
                      .textCursor = 1};
        looks << Look{.what = "folder button",
                      .widget = ButtonNamed(page, "Choose directory"),
                      .parent = row,
                      .place = {383, 0, 30, 25},
                      .text = "",
                      .picture = "folder.png",
                      .calls = {"clicked() > btnSlotLayout4Dir()"},
                      .cursor = Qt::PointingHandCursor};
        return looks;
    }

    QList<Look> MergeTables(QWidget* page)
    {
        const QString table =
            "columns FileName/Size/Time, first %1 wide, last stretched, labels "
            "left, no row numbers, whole rows, one, fixed, names on one line, header Calibri 11";
        QList<Look> looks;
        looks << Look{.what = "source table",
                      .widget = Child<QTableWidget>("m_pSourceVideoTable"),
                      .parent = page,
                      .minimum = {200, 180},
                      .font = "Calibri 11",
                      .style = kGrey,
                      .table = table.arg(180),
                      .calls = {"itemClicked(QTableWidgetItem*) > "
                                "SourceTableItemClick(QTableWidgetItem*)",
                                "itemDoubleClicked(QTableWidgetItem*) > "
                                "SourceTableItemDoubleClick(QTableWidgetItem*)"}};
        looks << Look{.what = "target table",
                      .widget = Child<QTableWidget>("m_pTargetVideoTable"),
                      .parent = page,
                      .minimum = {200, 180},
                      .font = "Calibri 11",
                      .style = kGrey,
                      .table = table.arg(80),
                      .calls = {"itemClicked(QTableWidgetItem*) > "
                                "TargetTableItemClick(QTableWidgetItem*)"}};
        for (const auto& [text, picture, slot] : {std::tuple("Add", "add.png", "btnAddSlot()"),
                                                  {"Up", "up.png", "btnUpSlot()"},
                                                  {"Down", "down.png", "btnDownSlot()"},
                                                  {"Delete", "delete.png", "btnDelSlot()"}}) {
            looks << Look{.what = text,
                          .widget = ButtonReading(page, text),
                          .parent = page,
                          .minimum = {60, 25},
                          .font = "Calibri 11 bold",
                          .style = kButton,
                          .picture = picture,
                          .calls = {QString("clicked() > ") + slot},
                          .cursor = Qt::PointingHandCursor,
                          .enabled = false};
        }
        return looks;
    }
};

QTEST_MAIN(VideoPagesLookTest)
#include "video_pages_look_test.moc"
