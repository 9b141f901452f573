#include "ui/drui.h"

#include "jobs/recording_watch.h"
#include "jobs/text_codec.h"
#include "jobs/tool_runner.h"
#include "ui/cmessagebox.h"
#include "ui/failure_notice.h"
#include "ui/focus_ring.h"
#include "ui/input_block.h"
#include "ui/page_parts.h"
#include "ui/styles.h"
#include "ui/tray_stand_in.h"
#include "ui/video_table.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScreen>
#include <QSlider>
#include <QStackedLayout>
#include <QTimer>

namespace {

constexpr QSize kWindowSize(1000, 600);
constexpr int kCutPage = 2;

constexpr int kHeaderButtons = 3;

// They are created first, from right to left, but Tab should follow reading order.
void OrderHeaderButtons(const QWidget* page)
{
    const auto buttons = page->findChildren<QPushButton*>().first(kHeaderButtons);
    QWidget::setTabOrder(buttons[2], buttons[1]);
    QWidget::setTabOrder(buttons[1], buttons[0]);
}

QRect Desktop()
{
    return QGuiApplication::primaryScreen()->geometry();
}

} // namespace

bool DRUI::m_bisFinished = false;

DRUI::DRUI(QWidget* parent, Qt::WindowFlags flags) : QMainWindow(parent, flags), m_thread(nullptr)
{
    UseOwnColours();
    ui.setupUi(this);
    InstallTextCodec("GB2312"); // again, as at program start
    ui.centralWidget->setStyleSheet(window_style);
    setWindowTitle(kProductName);
    FixSize(kWindowSize);
    m_pTrayStandIn = std::make_unique<TrayStandIn>();
    connect(m_pTrayStandIn.get(), SIGNAL(activated(QSystemTrayIcon::ActivationReason)), this,
            SLOT(trayiconActivated(QSystemTrayIcon::ActivationReason)));
    connect(m_pTrayStandIn.get(), SIGNAL(stopClicked()), this, SLOT(btnSlotMenuStop()));
    m_pFailureNotice = std::make_unique<FailureNotice>(*this, *m_pTrayStandIn);
    m_pFocusRing = new FocusRing(this);
    m_strIniPath = QCoreApplication::applicationDirPath() + "/ScreenRecord.ini";
}

void DRUI::Init()
{
    m_pPlayerProcess = CreateToolProcess("m_pPlayerProcess", SLOT(mplayerDataRecieve()));
    m_pDevProcess = CreateToolProcess("m_pDevProcess", SLOT(ReadDeviceInfo()));
    m_pRecProcess = CreateToolProcess("m_pRecProcess", SLOT(ReadRecordInfo()));
    m_pChangeTSProcess = CreateToolProcess("m_pChangeTSProcess", SLOT(ReadChange2TSInfo()));
    m_pMergeProcess = CreateToolProcess("m_pMergeProcess", SLOT(ReadMergeInfo()));
    m_pCutProcess = CreateToolProcess("m_pCutProcess", SLOT(ReadCutInfo()));

    m_pRecordingWatch = new RecordingWatch(m_pRecProcess);
    connect(m_pRecordingWatch, SIGNAL(failed(QString)), m_pFailureNotice.get(),
            SLOT(Tell(QString)));

    m_pStack = new QStackedLayout;
    m_pStack->setObjectName("m_pStack");
    BuildPages();
    auto* box = BareLayout<QVBoxLayout>();
    box->addLayout(m_pStack);
    ui.centralWidget->setLayout(box);

    m_nBlinkCount = 0;
    m_n64RecSpare = 0;
    m_n64AudioFrames = 0;

    m_pRecTimer = new QTimer(this);
    m_pRecTimer->setObjectName("m_pRecTimer");
    connect(m_pRecTimer, SIGNAL(timeout()), this, SLOT(doTimerRec()));

    WatchFolderFields(true);
}

// Asks a running recording to finish its file and waits for it. All other runs of the tool end with
// their process objects.
DRUI::~DRUI()
{
    m_bIsStart = false;
    if (m_pRecProcess == nullptr) {
        return; // Init() was not called
    }
    m_pRecordingWatch->Forget();
    m_pFailureNotice->Close(); // the wait below would freeze it
    WatchFolderFields(false);  // they lose focus with the window, which must not scan a folder
    AskToolToQuit(*m_pRecProcess);
    m_pRecProcess->waitForFinished(kToolWaitMs);
    m_pRecTimer->stop();
    delete m_pRecTimer;
    // A process deleted while it runs emits its last output, and the cut's slot reads the
    // conversion's process, which is already deleted then.
    for (QProcess* process : {m_pPlayerProcess, m_pDevProcess, m_pRecProcess, m_pChangeTSProcess,
                              m_pMergeProcess, m_pCutProcess}) {
        process->disconnect(this);
    }
    m_pPlayerProcess->kill();
    delete m_pPlayerProcess;
    delete m_pDevProcess;
    delete m_pRecProcess;
    delete m_pChangeTSProcess;
    delete m_pMergeProcess;
    delete m_pCutProcess;
}

QProcess* DRUI::CreateToolProcess(const char* name, const char* slot)
{
    auto* process = new QProcess(this);
    process->setObjectName(name);
    process->setProcessChannelMode(QProcess::MergedChannels);
    connect(process, SIGNAL(readyRead()), this, slot);
    return process;
}

// In the order of the stack: home 0, record 1, cut 2, merge 3.
void DRUI::BuildPages()
{
    InitLayout1Widget();
    InitLayout2Widget();
    InitLayout3Widget();
    InitLayout4Widget();
    for (QWidget* page : {m_pLayout1Widget, m_pLayout2Widget, m_pLayout3Widget, m_pLayout4Widget}) {
        m_pStack->addWidget(page);
        OrderHeaderButtons(page);
    }
    m_pStack->setCurrentIndex(0);
    m_pFocusRing->Watch();
}

void DRUI::FixSize(const QSize& size)
{
    setFixedSize(size);
    resize(size);
    move(CentredIn(Desktop(), size));
}

// Shows a message over the upper left part of the window.
void DRUI::Inform(const QString& text)
{
    CMessageBox box;
    box.setGeometry(x() + width() / 8, y() + height() / 8, 400, 150);
    box.InitInfoDialog(text);
    box.exec();
}

QPushButton* DRUI::CreateButton(int kind, int x, QWidget* parent)
{
    struct Kind
    {
        const char* picture;
        const char* slot;
        const char* name;
    };
    static const Kind kinds[] = {
        {":/image/about.png", SLOT(btnAboutSlot()), "About"},
        {":/image/support.png", SLOT(btnSupportSlot()), "Support"},
        {":/image/help.png", SLOT(btnHelpSlot()), "Help"},
    };
    const Kind& chosen = kinds[kind];

    auto* button = new IconButton(parent);
    button->setFlat(true);
    button->setFont(CalibriFont(11, QFont::Bold));
    button->setCursor(Qt::PointingHandCursor);
    button->setAccessibleName(chosen.name);
    button->setToolTip(chosen.name);
    button->setAutoDefault(true);
    connect(button, SIGNAL(clicked()), this, chosen.slot);

    const QSize size = QPixmap(chosen.picture).size();
    const QSize shown(static_cast<int>(size.width() / 2.5), static_cast<int>(size.height() / 2.5));
    button->setGeometry(x, 40, 40, 20);
    button->setIcon(QIcon(chosen.picture)); // by name, so that QIcon finds the @2x file
    button->setIconSize(shown);
    button->resize(shown);
    button->setStyleSheet(window_style);
    return button;
}

// Does nothing on purpose: the system's title bar serves.
void DRUI::CreateFrameTitle(const QString& /*title*/) {}

QVBoxLayout* DRUI::CreateHeader(QWidget* page, const TitleStripShape& shape)
{
    QLabel* strip = CreateTitleStrip(page, shape);
    for (int kind = 0; kind < kHeaderButtons; ++kind) {
        CreateButton(kind, width() - 30 - 30 * kind, strip);
    }
    auto* header = BareLayout<QVBoxLayout>();
    header->addWidget(strip);
    header->addWidget(CreateSeparator(page, shape.width));
    return header;
}

void DRUI::btnSlot()
{
    LeaveScan();
    CreateSystemTray();
    m_pStack->setCurrentWidget(m_pLayout2Widget);
}

void DRUI::btnEditSlot()
{
    Enter(Entry::Merge);
}

void DRUI::btnMontageSlot()
{
    Enter(Entry::Cut);
}

// A running recording goes on and the merge list stays. Back resets only the cut preview.
void DRUI::btnSlotBack()
{
    LeaveScan();
    if (m_pStack->currentIndex() == kCutPage) {
        AskToolToQuit(*m_pPlayerProcess);
        m_pPlayerProcess->kill();
        m_strPreviewFile.clear();
        m_pCutSlider->setValue(0);
    }
    m_pStack->setCurrentWidget(m_pLayout1Widget);
}

// The three frame slots have no controls on purpose: the system's title bar serves.
void DRUI::btnMinSlot()
{
    showMinimized();
}

// The pages have no maximise button whose image would change.
void DRUI::btnMaxSlot()
{
    if (IsBusy()) {
        return;
    }
    FixSize(m_bIsMaximized ? kWindowSize : Desktop().size());
    RebuildPages();
    m_bIsMaximized = !m_bIsMaximized;
}

void DRUI::btnCloseSlot()
{
    close();
}

// No page has the trees that would call these two. They stay on purpose.
void DRUI::itemClick(QTreeWidgetItem* /*item*/, int /*column*/) {}
void DRUI::itemDiskClick(QTreeWidgetItem* /*item*/, int /*column*/) {}

void DRUI::keyPressEvent(QKeyEvent* event)
{
    if (event->key() != Qt::Key_Escape) { // Escape is swallowed
        QMainWindow::keyPressEvent(event);
    }
}

void DRUI::paintEvent(QPaintEvent* /*event*/) {}

// Closing never asks, not even during a recording or a job. The close is accepted, and the
// destructor finishes a recording's file.
void DRUI::closeEvent(QCloseEvent* /*event*/) {}
