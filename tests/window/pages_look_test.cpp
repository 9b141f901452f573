#include "tests/window/job_tool.h"
#include "tests/window/page_looks.h"
#include "ui/styles.h"

#include <QComboBox>

// The tables for the home and record pages.
namespace {
constexpr PageShape kHome{999, 101, true, true};
constexpr PageShape kRecord{1000, 101, false, true};
} // namespace

class PagesLookTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        PrepareVideos();
        InstallTool(kRecordingTool); // lists devices
        OpenWindow();
    }
    void cleanup() { FinishVideos(); }

    void theHomePage()
    {
        auto* page = Child<QWidget>("m_pLayout1Widget");
        QList<Look> looks = Header(page, kHome) + Footer(page, kHome);
        looks << Entry(page, "recording entry",
                       "The easiest screen recorder to capture any video or audio\n on your "
                       "computer and save them in high quality",
                       "rec.png", "btnSlot()");
        looks << Entry(page, "merge entry",
                       "Merge your several capturing screen videos into one file", "edit.png",
                       "btnEditSlot()");
        looks << Entry(page, "trim entry",
                       "Trim your capturing screen video by setting the start time\nand end time",
                       "cut_main.png", "btnMontageSlot()");
        Expect(Differences("home page", looks));
        Expect(LayoutDifferences("home page", page->layout(), looks,
                                 {"column, spacing 0", "  column",          "    header strip",
                                  "    separator",     "  stretch 1",       "  column [10]",
                                  "    row",           "      space 100",   "      recording entry",
                                  "      space 100",   "    stretch 0",     "    row",
                                  "      space 100",   "      merge entry", "      space 100",
                                  "    stretch 0",     "    row",           "      space 100",
                                  "      trim entry",  "      space 100",   "    stretch 0",
                                  "  stretch 1",       "  footer"}));
    }

    // What no table shows: the blue button's style is used by no page.
    void theSharedStyles()
    {
        QCOMPARE(action_button_style,
                 QString("QPushButton{background-color:rgb(30, 144, 255);color: white; "
                         "border-radius: 10px; border: 2px groove white; border-style: outset;}"
                         "QPushButton:hover{background-color:rgb(220, 220, 220); color: white;}"
                         "QPushButton:pressed{background-color:rgb(30, 144, 255); color: "
                         "white;border: 2px groove white;border-style: inset; }"));
        QCOMPARE(backGroud_style, QString("background-color: rgb(28, 28, 28);"));
        QCOMPARE(main_button_style, GreyButtonStyle("\t\t\t\t\t\t\t\t   "));
    }

    void theRecordPage()
    {
        auto* page = Child<QWidget>("m_pLayout2Widget");
        QList<Look> looks = Header(page, kRecord) + Footer(page, kRecord) + RecordPanel(page);
        QWidget* bar = HolderOf(Child<QPushButton>("m_pRecordBtn"));
        looks << Look{.what = "button bar", .widget = bar, .parent = page, .minimum = {1000, 40}};
        looks << BarButton(page, "Back", {50, 2, 100, 35}, "btnSlotBack()");
        looks << BarButton(page, "Record", {849, 2, 100, 35}, "btnSlotRecord()");
        Expect(Differences("record page", looks));
        Expect(LayoutDifferences("record page", page->layout(), looks,
                                 {"column", "  column, spacing 0", "    header strip",
                                  "    separator", "  stretch 3", "  column, margins 50 50 50 50",
                                  "    panel", "  stretch 3", "  button bar", "  footer"}));
    }

private:
    static Look Entry(QWidget* page, const QString& what, const QString& text,
                      const QString& picture, const QString& slot)
    {
        return {.what = what,
                .widget = ButtonReading(page, text),
                .parent = page,
                .font = "Calibri 11 bold",
                .colour = QColor(54, 75, 75).name(),
                .style = GreyButtonStyle("\t\t\t\t\t\t\t  "),
                .picture = picture,
                .pictureSize = QImage(":/image/" + picture).size(),
                .calls = {"clicked() > " + slot},
                .cursor = Qt::PointingHandCursor,
                .flat = true};
    }

    QList<Look> RecordPanel(QWidget* page)
    {
        const auto caption = [page](const QString& text) { return LabelReading(page, text); };
        const QString font = "Calibri 12 bold";
        auto* field = Child<QLineEdit>("m_pSaveDirEdit");
        QWidget* panel = HolderOf(field);
        QList<Look> looks;
        looks << Look{.what = "panel",
                      .widget = panel,
                      .parent = page,
                      .minimum = {300, 320},
                      .style = kGrey};
        looks << Look{.what = "audio caption",
                      .widget = caption("Audio: "),
                      .parent = panel,
                      .place = {50, 80, 120, 25},
                      .font = font};
        looks << Look{.what = "audio choices",
                      .widget = DRUI::m_pAudioComBox,
                      .parent = panel,
                      .place = {180, 80, 300, 25},
                      .font = font,
                      .calls = {"currentIndexChanged(int) > ComBoxIndexChange(int)"}};
        looks << Look{.what = "status",
                      .widget = DRUI::m_pStereoMix,
                      .parent = panel,
                      .place = {600, 50, 600, 150},
                      .font = "Calibri 18 bold",
                      .text = "",
                      .colour = QColor(Qt::red).name(),
                      .shown = false};
        looks << Look{.what = "save caption",
                      .widget = caption("Save directory: "),
                      .parent = panel,
                      .place = {50, 120, 120, 25},
                      .font = font};
        looks << Look{.what = "save directory",
                      .widget = field,
                      .parent = panel,
                      .place = {180, 120, 300, 25}, // its minimum is wider than the 200 given
                      .minimum = {300, 20},
                      .font = font,
                      .text = SaveDirectory(),
                      .style = kField,
                      .textCursor = 1,
                      .enabled = false};
        looks << Look{.what = "folder button",
                      .widget = ButtonNamed(page, "Choose directory"),
                      .parent = panel,
                      .place = {500, 120, 30, 25},
                      .text = "",
                      .picture = "folder.png",
                      .calls = {"clicked() > btnSlotLayout2Dir()"}};
        looks << Look{.what = "free space caption",
                      .widget = caption("Free space: "),
                      .parent = panel,
                      .place = {50, 170, 200, 25},
                      .font = font};
        looks << Look{.what = "free space",
                      .widget = Child<QLabel>("m_pFreeSpaceLabel"),
                      .parent = panel,
                      .place = {220, 170, 100, 25},
                      .font = font};
        looks << Look{.what = "tag line",
                      .widget =
                          caption("The best screen recorder & video editor that you can use to "
                                  "capture\neverything on your screen with original "
                                  "picture-in-picture"),
                      .parent = panel,
                      .place = {50, 220, 500, 50},
                      .font = font};
        return looks;
    }
};

QTEST_MAIN(PagesLookTest)
#include "pages_look_test.moc"
