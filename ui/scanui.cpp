#include "ui/scanui.h"

#include "jobs/job_report.h"
#include "jobs/tool_runner.h"
#include "ui/drui.h"
#include "ui/focus_ring.h"
#include "ui/page_parts.h"
#include "ui/path_label.h"
#include "ui/styles.h"

#include <QCloseEvent>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QProgressBar>
#include <QThread>
#include <QWindow>

int SCANUI::m_nOprType = 0;
bool SCANUI::m_bIsFinished = false;
int SCANUI::m_nError = kJobGood;
QPointer<QProgressBar> SCANUI::m_progressBar;

SCANUI::SCANUI(QDialog* parent, Qt::WindowFlags /*flags*/)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint)
{
    setWindowTitle(kProductName);
    setFixedSize(500, 250);
    resize(500, 250);
    InitDialog();
    (new FocusRing(this))->Watch();
    connect(&m_msgBox, SIGNAL(finished(int)), this, SLOT(Answer()));
}

void SCANUI::InitSlot(DRUI* drui)
{
    m_pDrui = drui;
    connect(m_pDrui, SIGNAL(AddProcessCallBack(int, QString, QString, int)), this,
            SLOT(AddProcessCallBackSlot(int, QString, QString, int)));
    connect(m_pDrui, SIGNAL(CutProcessCallBack(int, QString, QString, int)), this,
            SLOT(CutProcessCallBackSlot(int, QString, QString, int)));
}

// Input events wait, so the dialog cannot be closed before the job starts.
void SCANUI::ShowOver(const QWidget& window)
{
    setGeometry(window.x() + window.width() / 4, window.y() + window.height() / 4, 500, 250);
    setVisible(true);
    QElapsedTimer waited;
    waited.start();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    while (isVisible() && !windowHandle()->isExposed() && waited.elapsed() < 1000) {
        QThread::msleep(1);
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    }
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void SCANUI::InitDialog()
{
    m_bIsFinished = false;
    auto* dialog = BareLayout<QVBoxLayout>();
    dialog->addWidget(CreateStrip());
    dialog->addStretch(2);
    dialog->addLayout(CreateBody());
    setLayout(dialog);
}

QLabel* SCANUI::CreateStrip()
{
    auto* strip = new QLabel(this);
    strip->setStyleSheet(backGroud_style);
    auto* logo = new PictureLabel(kLogo, strip, kLogoSize);
    auto* name = new QLabel(kProductName, strip);
    name->setFont(CalibriFont(13));
    SetTextColor(name, Qt::white);
    auto* close = new QPushButton(strip);
    close->setFlat(true);
    close->setIcon(QIcon(":/image/close.png"));
    close->setFixedSize(30, 30);
    close->setCursor(Qt::PointingHandCursor);
    close->setAccessibleName("Close");
    close->setAutoDefault(false);
    connect(close, SIGNAL(clicked()), this, SLOT(btnSlot()));

    auto* row = BareLayout<QHBoxLayout>();
    row->addSpacing(10);
    row->addWidget(logo);
    row->addSpacing(10);
    row->addWidget(name);
    row->addStretch();
    row->addWidget(close);
    row->addSpacing(5);
    strip->setLayout(row);
    strip->setMinimumHeight(40);
    return strip;
}

QVBoxLayout* SCANUI::CreateBody()
{
    m_progressBar = new QProgressBar(this);
    m_progressBar->setObjectName("progressBar");
    m_progressBar->setRange(0, 100);
    m_progressBar->setValue(0);
    m_progressBar->setTextVisible(false);
    m_progressBar->setAccessibleName("Progress");

    m_labelInfo = new PathLabel(this);
    m_labelInfo->setObjectName("m_labelInfo");
    m_labelInfo->setTextFormat(Qt::PlainText); // a file name is not markup
    m_labelInfo->setFont(CalibriFont(12));
    m_labelInfo->setWordWrap(true); // otherwise a long path would ask for a wider dialog
    m_labelInfo->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    m_labelInfo->setMinimumHeight(5 * (m_labelInfo->fontMetrics().lineSpacing() + 1));
    SetTextColor(m_labelInfo, Qt::black);

    auto* holder = new QLabel(this);
    holder->setMinimumHeight(45);
    QPushButton* cancel = CreateBarButton(holder, {0, 0, 100, 30}, "Cancel");
    connect(cancel, SIGNAL(clicked()), this, SLOT(btnSlot()));
    cancel->move((width() - 10 - cancel->width()) / 2, 5);

    auto* body = new QVBoxLayout;
    body->setContentsMargins(5, 0, 5, 0);
    body->addWidget(m_progressBar);
    body->addStretch(2);
    body->addWidget(m_labelInfo);
    body->addWidget(holder);
    return body;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signal's signature
void SCANUI::AddProcessCallBackSlot(int percent, QString current, QString destination, int error)
{
    Report(kMergeOperation, percent, current, destination, error);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signal's signature
void SCANUI::CutProcessCallBackSlot(int percent, QString current, QString destination, int error)
{
    Report(kCutOperation, percent, current, destination, error);
}

// The last report closes the dialog before its error is stored. So a failed job that follows a
// successful one shows success first and failure last. This is intended.
void SCANUI::Report(int operation, int percent, const QString& current, const QString& destination,
                    int error)
{
    m_nOprType = operation;
    m_progressBar->setValue(percent);
    m_strDestination = destination;
    m_labelInfo->setText(ProgressText(operation, percent, current, destination));
    if (percent == 100) {
        m_bIsFinished = true;
        m_msgBox.Close();
        CloseForReport();
    }
    m_nError = error;
    if (m_nError != kJobGood) {
        CloseForReport();
    }
}

// Every such close shows an outcome. Qt sends no close event to a hidden dialog, so it is sent
// here. While an outcome is shown, another close does nothing.
void SCANUI::CloseForReport()
{
    if (isVisible()) {
        close();
    } else if (!m_bIsTelling) {
        m_bIsTelling = true;
        QCloseEvent event;
        QCoreApplication::sendEvent(this, &event);
        m_bIsTelling = false;
    }
}

void SCANUI::btnSlot()
{
    close();
}

void SCANUI::closeEvent(QCloseEvent* event)
{
    event->accept();
    if (m_nError != kJobGood) { // also the previous job's error, until this one reports
        Tell(FailureText(m_nOprType));
    } else if (m_bIsFinished) {
        Tell(SuccessText(m_nOprType, m_strDestination));
    } else {
        AskToCancel();
        if (m_bIsFinished) { // while the question was open
            Tell(SuccessText(m_nOprType, m_strDestination));
        } else if (m_msgBox.isVisible() || m_msgBox.GetMessageBoxRet() != 1) {
            event->ignore();
        }
    }
}

void SCANUI::paintEvent(QPaintEvent* /*event*/) {}

// Waits for the answer, but not longer than for the tool, so that the job can go on. Then the
// question stays open, and its answer counts whenever it comes. It blocks this dialog only: the
// main window can still be closed.
void SCANUI::AskToCancel()
{
    if (m_msgBox.isVisible()) {
        return;
    }
    m_msgBox.setGeometry(BoxPlace());
    m_msgBox.InitQuestionDialog(CancelQuestion(m_nOprType));
    m_msgBox.setWindowModality(Qt::WindowModal);
    m_msgBox.winId(); // has no window yet
    m_msgBox.windowHandle()->setTransientParent(windowHandle());
    m_msgBox.show();
    QEventLoop loop;
    connect(&m_msgBox, SIGNAL(finished(int)), &loop, SLOT(quit()));
    ExecUntilToolEnds(loop);
}

void SCANUI::Answer()
{
    if (!m_bIsFinished && m_msgBox.GetMessageBoxRet() == 1) {
        DRUI::m_bisFinished = true;
        m_progressBar->setValue(0);
        hide();
    }
}

void SCANUI::Tell(const QString& text)
{
    CMessageBox box;
    box.setGeometry(BoxPlace());
    box.InitInfoDialog(text);
    box.exec();
}

// The message dialog uses its own fixed size of 400 by 150 instead.
QRect SCANUI::BoxPlace() const
{
    return {x() + width() / 8, y() + height() / 8, 150, 400};
}
