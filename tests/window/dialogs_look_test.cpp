#include "tests/window/job_tool.h"
#include "tests/window/page_looks.h"
#include "tests/window/pictures.h"
#include "ui/cmessagebox.h"
#include "ui/tray_stand_in.h"

#include <QAction>
#include <QMenu>
#include <QProgressBar>

// The tables for the two message dialogs, the progress dialog, and the tray icon and menu.

namespace {

const QString kBlack = "background-color: rgb(28, 28, 28);";

QLabel* PictureIn(const QWidget* dialog)
{
    for (auto* label : dialog->findChildren<QLabel*>()) {
        if (!label->pixmap(Qt::ReturnByValue).isNull()) {
            return label;
        }
    }
    return nullptr;
}

// A button on a message dialog's bar.
Look BoxButton(const QWidget* dialog, const QString& text, int left, const QString& slot)
{
    return {.what = text,
            .widget = ButtonReading(dialog, text),
            .parent = HolderOf(ButtonReading(dialog, "OK")),
            .place = {left, 5, 80, 25},
            .font = "Calibri 12",
            .style = GreyButtonStyle("\t\t\t\t\t\t\t\t   "),
            .calls = {"clicked() > " + slot},
            .cursor = Qt::PointingHandCursor,
            .flat = true};
}

// Common to both message dialogs, of width W.
QList<Look> MessageLooks(CMessageBox& dialog, int W, const QString& title, int titleLeft,
                         const QString& picture, bool wraps)
{
    QWidget* bar = HolderOf(ButtonReading(&dialog, "OK"));
    QLabel* titleLabel = LabelReading(&dialog, title);
    return {
        {.what = "dialog", .widget = &dialog, .fixed = {W, 150}, .shown = false},
        {.what = "strip",
         .widget = HolderOf(titleLabel),
         .parent = &dialog,
         .minimum = {W, 30},
         .text = "",
         .style = kBlack},
        {.what = "title",
         .widget = titleLabel,
         .place = {titleLeft, 5, 400, 40},
         .font = "Calibri 12",
         .colour = "#ffffff",
         .alignment = Qt::AlignLeft},
        {.what = "picture",
         .widget = PictureIn(&dialog),
         .parent = &dialog,
         .picture = picture,
         .pictureSize = {48, 48},
         .alignment = Qt::AlignCenter},
        {.what = "message",
         .widget = LabelReading(&dialog, "What is told"),
         .parent = &dialog,
         .minimum = {W - 60, 80},
         .font = "Calibri 12",
         .colour = "#000000",
         .wraps = wraps},
        {.what = "bar",
         .widget = bar,
         .parent = &dialog,
         .minimum = {W, 40},
         .text = "",
         .style = "background-color: rgb(220, 220, 220);"},
    };
}

const QStringList kMessageLayout = {"column",        "  row, spacing 0", "    strip",
                                    "  stretch 2",   "  column",         "    row, margins 5 0 0 0",
                                    "      picture", "      message",    "    stretch 2",
                                    "    bar"};

} // namespace

class DialogsLookTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Prepare(); }
    void cleanup() { CloseWindow(); }

    void theInformation_data() { AddWidths(); }
    void theInformation()
    {
        QFETCH(int, width);
        CMessageBox dialog;
        dialog.setFixedSize(width, 150);
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression("No such slot CMessageBox::btnSlotClose"));
        dialog.InitInfoDialog("What is told");
        QList<Look> looks = MessageLooks(dialog, width, "Info", 10, "information.png", true);
        looks << BoxButton(&dialog, "OK", width / 3, "btnSlotOK()");
        looks << Look{.what = "close",
                      .widget = ButtonNamed(&dialog, "Close"),
                      .parent = HolderOf(LabelReading(&dialog, "Info")),
                      .place = {5, 0, 30, 30},
                      .text = "",
                      .picture = "close.png",
                      .cursor = Qt::PointingHandCursor,
                      .flat = true};
        Expect(Differences("information", looks));
        Expect(LayoutDifferences("information", dialog.layout(), looks, kMessageLayout));
        QCOMPARE(dialog.findChildren<QPushButton*>().size(), 2);
    }

    void theQuestion_data() { AddWidths(); }
    void theQuestion()
    {
        QFETCH(int, width);
        CMessageBox dialog;
        dialog.setFixedSize(width, 150);
        dialog.InitQuestionDialog("What is told");
        QList<Look> looks = MessageLooks(dialog, width, "  Question", 0, "question.png", false);
        looks << BoxButton(&dialog, "NO", width / 4, "btnSlotNO()")
              << BoxButton(&dialog, "OK", width / 4 + 100, "btnSlotOK()");
        Expect(Differences("question", looks));
        Expect(LayoutDifferences("question", dialog.layout(), looks, kMessageLayout));
        QCOMPARE(dialog.findChildren<QPushButton*>().size(), 2);
    }

    void theMessageDialogsWindow()
    {
        const CMessageBox dialog;
        QCOMPARE(dialog.objectName(), QString("Dialog"));
        QCOMPARE(dialog.windowTitle(), QString("Tarvessa Data Tool"));
        QCOMPARE(dialog.windowFlags() & (Qt::FramelessWindowHint | Qt::WindowType_Mask),
                 Qt::FramelessWindowHint | Qt::Dialog);
        QCOMPARE(dialog.size(), QSize(400, 150));
        QCOMPARE(dialog.minimumSize(), dialog.maximumSize());
        const QSize size(32, 32);
        QVERIFY2(dialog.windowIcon().pixmap(size).toImage() ==
                     QIcon(":/image/logo.ico").pixmap(size).toImage(),
                 "the window's icon is not the logo");
    }

    void theProgressDialog()
    {
        SCANUI dialog;
        QLabel* name = LabelReading(&dialog, "Lumenfold Screen Recorder");
        QWidget* strip = HolderOf(name);
        QPushButton* cancel = ButtonReading(&dialog, "Cancel");
        const QList<Look> looks = {
            {.what = "dialog", .widget = &dialog, .fixed = {500, 250}, .shown = false},
            {.what = "strip",
             .widget = strip,
             .parent = &dialog,
             .minimum = {0, 40},
             .text = "",
             .style = kBlack},
            {.what = "logo",
             .widget = PictureIn(&dialog),
             .parent = strip,
             .picture = "logo.png",
             .pictureSize = {30, 50}},
            {.what = "name", .widget = name, .font = "Calibri 13", .colour = "#ffffff"},
            {.what = "close",
             .widget = ButtonNamed(&dialog, "Close"),
             .parent = strip,
             .fixed = {30, 30},
             .text = "",
             .picture = "close.png",
             .calls = {"clicked() > btnSlot()"},
             .cursor = Qt::PointingHandCursor,
             .flat = true},
            {.what = "bar", .widget = SCANUI::m_progressBar, .parent = &dialog},
            {.what = "progress text",
             .widget = dialog.findChild<QLabel*>("m_labelInfo"),
             .parent = &dialog,
             .font = "Calibri 12",
             .text = "",
             .colour = "#000000",
             .alignment = Qt::AlignLeft | Qt::AlignTop,
             .wraps = true},
            {.what = "holder of Cancel",
             .widget = HolderOf(cancel),
             .parent = &dialog,
             .minimum = {0, 45}},
            {.what = "Cancel",
             .widget = cancel,
             .place = {195, 5, 100, 30},
             .font = "Calibri 12 bold",
             .style = GreyButtonStyle("\t\t\t\t\t\t\t\t   "),
             .calls = {"clicked() > btnSlot()"},
             .cursor = Qt::PointingHandCursor,
             .flat = true},
        };
        Expect(Differences("progress dialog", looks));
        Expect(LayoutDifferences("progress dialog", dialog.layout(), looks,
                                 {"column, spacing 0", "  strip", "  stretch 2",
                                  "  column, margins 5 0 5 0", "    bar", "    stretch 2",
                                  "    progress text", "    holder of Cancel"}));
        Expect(LayoutDifferences("progress dialog's strip", strip->layout(), looks,
                                 {"row, spacing 0", "  space 10", "  logo", "  space 10", "  name",
                                  "  stretch 0", "  close", "  space 5"}));
    }

    void theProgressDialogsBarAndWindow()
    {
        const SCANUI dialog;
        auto* bar = dialog.findChild<QProgressBar*>("progressBar");
        QCOMPARE(bar, SCANUI::m_progressBar.data());
        QCOMPARE(bar->minimum(), 0);
        QCOMPARE(bar->maximum(), 100);
        QCOMPARE(bar->value(), 0);
        QVERIFY2(!bar->isTextVisible(), "the bar shows a percentage of its own");
        QCOMPARE(dialog.size(), QSize(500, 250));
        QCOMPARE(dialog.windowTitle(), QString("Lumenfold Screen Recorder"));
        QCOMPARE(dialog.windowFlags() & (Qt::FramelessWindowHint | Qt::WindowType_Mask),
                 Qt::FramelessWindowHint | Qt::Dialog);
        QVERIFY2(!dialog.isModal(), "the dialog is modal");
    }

    void theTrayIconAndItsMenu()
    {
        EnterRecordPage();
        auto* tray = Child<QSystemTrayIcon>("m_pTrayIcon");
        QCOMPARE(tray->parent(), &Window());
        QCOMPARE(tray->toolTip(), QString("Lumenfold Screen Recorder"));
        QVERIFY2(!tray->isVisible(), "the icon shows before a recording");
        Expect(PictureDifference("tray icon", tray->icon(), {22, 22}, "rec1.png"));
        const char* activated = SIGNAL(activated(QSystemTrayIcon::ActivationReason));
        const char* slot = SLOT(trayiconActivated(QSystemTrayIcon::ActivationReason));
        QVERIFY2(disconnect(tray, activated, &Window(), slot), "a click on the icon does nothing");

        QCOMPARE(tray->contextMenu()->parent(), &Window());
        struct Entry
        {
            QString text;
            QString picture;
            bool enabled;
            const char* slot;
        };
        const QList<Entry> expected = {{"Pause", "pause.png", false, SLOT(btnSlotMenuPause())},
                                       {"Stop", "stop.png", true, SLOT(btnSlotMenuStop())},
                                       {"Quit", "quit.png", true, SLOT(btnSlotMenuQuit())}};
        const QList<QAction*> entries = tray->contextMenu()->actions();
        QCOMPARE(entries.size(), expected.size());
        for (int i = 0; i < entries.size(); ++i) {
            const Entry& entry = expected.at(i);
            QCOMPARE(entries.at(i)->text(), entry.text);
            QCOMPARE(entries.at(i)->isEnabled(), entry.enabled);
            QCOMPARE(entries.at(i)->parent(), &Window());
            Expect(PictureDifference(entry.text, entries.at(i)->icon(), {16, 16}, entry.picture));
            QVERIFY2(disconnect(entries.at(i), SIGNAL(triggered()), &Window(), entry.slot),
                     qPrintable(entry.text + " does not call " + entry.slot));
        }
    }

    // It stands in the task list where there is no tray.
    void theStandInForTheTrayIcon()
    {
        const TrayStandIn standIn;
        QCOMPARE(standIn.windowTitle(), QString("Recording"));
        Expect(PictureDifference("stand-in", standIn.windowIcon(), {22, 22}, "rec1.png"));
        QVERIFY2(LabelReading(&standIn, "Lumenfold Screen Recorder is recording."),
                 "the window does not say what it is");
    }

private:
    static void AddWidths()
    {
        QTest::addColumn<int>("width");
        QTest::newRow("as it comes") << 400;
        QTest::newRow("made wider") << 600;
    }
};

QTEST_MAIN(DialogsLookTest)
#include "dialogs_look_test.moc"
