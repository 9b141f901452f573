#include "ui/cmessagebox.h"

#include "ui/focus_ring.h"
#include "ui/page_parts.h"
#include "ui/styles.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QWindow>

CMessageBox::CMessageBox(QDialog* /*parent*/, Qt::WindowFlags /*flags*/)
{
    ui.setupUi(this);
    setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
    setWindowTitle("Tarvessa Data Tool");
    setWindowIcon(QIcon(":/image/logo.ico"));
    setFixedSize(400, 150);
    resize(400, 150);
    m_pFocusRing = new FocusRing(this);
}

// cppcheck-suppress passedByValue
void CMessageBox::InitInfoDialog(QString text) // NOLINT(performance-unnecessary-value-param)
{
    QLabel* strip = StartLayout();
    auto* close = new QPushButton(strip);
    close->setGeometry(5, 0, 30, 30);
    close->setIcon(QIcon(":/image/close.png"));
    close->setCursor(Qt::PointingHandCursor);
    close->setFlat(true); // the title covers it: a frame would stick out
    close->setFocusPolicy(Qt::NoFocus);
    close->setAutoDefault(false); // Enter presses OK
    close->setAccessibleName("Close");
    // The dialog has no such slot, so the button does nothing. This is intended: OK or a right
    // click closes the dialog.
    connect(close, SIGNAL(clicked()), this, SLOT(btnSlotClose()));
    AddTitle(strip, 10, "Info");

    QLabel* bar = AddBodyAndBar(":/image/information.png", text);
    m_pMessageLabel->setWordWrap(true);
    AddButton(bar, width() / 3, "OK", SLOT(btnSlotOK()));
}

// cppcheck-suppress passedByValue
void CMessageBox::InitQuestionDialog(QString text) // NOLINT(performance-unnecessary-value-param)
{
    AddTitle(StartLayout(), 0, "  Question");
    QLabel* bar = AddBodyAndBar(":/image/question.png", text);
    AddButton(bar, width() / 4, "NO", SLOT(btnSlotNO()));
    AddButton(bar, width() / 4 + 100, "OK", SLOT(btnSlotOK()));
}

int CMessageBox::GetMessageBoxRet() const
{
    return m_nRet;
}

void CMessageBox::btnSlotOK()
{
    m_nRet = 1;
    close();
}

void CMessageBox::btnSlotNO()
{
    m_nRet = 0;
    close();
}

void CMessageBox::Close()
{
    m_nRet = 0;
    close();
}

// Creates the dialog's layout with the title strip on top. Deletes that of an earlier Init call, so
// that a dialog can be used again.
QLabel* CMessageBox::StartLayout()
{
    delete layout();
    for (auto* child : findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        if (child != m_pFocusRing) {
            delete child;
        }
    }

    auto* strip = new QLabel(this);
    strip->setMinimumSize(width(), 30);
    strip->setStyleSheet(backGroud_style);
    auto* title = BareLayout<QHBoxLayout>();
    title->addWidget(strip);
    auto* dialog = new QVBoxLayout(this);
    dialog->setContentsMargins(0, 0, 0, 0);
    dialog->addLayout(title);
    dialog->addStretch(2);
    return strip;
}

void CMessageBox::AddTitle(QLabel* strip, int left, const QString& text)
{
    QLabel* title = CreateText(strip, {left, 5, 400, 40}, text, CalibriFont(12));
    title->setAlignment(Qt::AlignLeft);
    SetTextColor(title, Qt::white);
}

QLabel* CMessageBox::AddBodyAndBar(const QString& picture, const QString& text)
{
    auto* pictureLabel = new PictureLabel(picture, this);
    pictureLabel->setAlignment(Qt::AlignCenter);
    m_pMessageLabel = new QLabel(text, this);
    m_pMessageLabel->setObjectName("m_pMessageLabel");
    m_pMessageLabel->setTextFormat(Qt::PlainText); // a file name is not markup
    m_pMessageLabel->setMinimumSize(width() - 60, 80);
    m_pMessageLabel->setFont(CalibriFont(12));
    SetTextColor(m_pMessageLabel, Qt::black);
    auto* body = new QHBoxLayout;
    body->setContentsMargins(5, 0, 0, 0);
    body->addWidget(pictureLabel);
    body->addWidget(m_pMessageLabel);
    setAccessibleName(text); // read out when the dialog appears

    auto* bar = new QLabel(this);
    bar->setMinimumSize(width(), 40);
    bar->setStyleSheet("background-color: rgb(220, 220, 220);");
    auto* lower = new QVBoxLayout;
    lower->setContentsMargins(0, 0, 0, 0);
    lower->addLayout(body);
    lower->addStretch(2);
    lower->addWidget(bar);
    static_cast<QVBoxLayout*>(layout())->addLayout(lower);
    AddEdge();
    return bar;
}

// Separates the message from a window of the same light grey, such as the progress dialog.
void CMessageBox::AddEdge()
{
    auto* edge = new QFrame(this);
    edge->setObjectName("m_pEdge");
    edge->setFrameStyle(QFrame::Box | QFrame::Plain);
    edge->setAttribute(Qt::WA_TransparentForMouseEvents);
    edge->setGeometry(rect());
    SetTextColor(edge, QColor(128, 128, 128)); // visible on the dark strip and on light grey
}

void CMessageBox::AddButton(QLabel* bar, int left, const QString& text, const char* slot)
{
    QPushButton* button = CreateBarButton(bar, {left, 5, 80, 25}, text);
    button->setFont(CalibriFont(12));
    connect(button, SIGNAL(clicked()), this, slot);
    m_pFocusRing->Watch();
}

void CMessageBox::paintEvent(QPaintEvent* /*event*/)
{
    const QPainter painter(this); // draws nothing besides the widgets
}

void CMessageBox::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        m_dragOffset = event->globalPosition().toPoint() - frameGeometry().topLeft();
        event->accept();
    } else if (event->button() == Qt::RightButton) {
        close();
    }
}

void CMessageBox::mouseMoveEvent(QMouseEvent* event)
{
    if (event->buttons() == Qt::LeftButton) {
        if (QGuiApplication::platformName() == "wayland") {
            windowHandle()->startSystemMove(); // no program can move its windows there
        } else {
            move(event->globalPosition().toPoint() - m_dragOffset);
        }
        event->accept();
    }
}
