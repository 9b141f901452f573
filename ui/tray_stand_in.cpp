#include "ui/tray_stand_in.h"

#include "jobs/text_codec.h"
#include "ui/page_parts.h"
#include "ui/styles.h"
#include "util/format.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QVBoxLayout>

namespace {

constexpr QSize kButtonSize(130, 30);
constexpr int kLookMs = 500; // a look may open a connection to the message bus
constexpr int kPatienceMs = 3000;

QPushButton* AddButton(QBoxLayout* row, const QString& text, QWidget* parent)
{
    auto* button = CreateBarButton(parent, {{}, kButtonSize}, text);
    button->setFixedSize(kButtonSize);
    button->setFont(CalibriFont(12));
    row->addWidget(button);
    return button;
}

} // namespace

TrayStandIn::TrayStandIn()
{
    setObjectName("m_pTrayStandIn");
    setWindowTitle(tr("Recording"));
    setWindowIcon(QIcon(":/image/rec1.png"));
    setFocusPolicy(Qt::StrongFocus);

    auto* text = new QLabel(tr("Lumenfold Screen Recorder is recording."), this);
    text->setFont(CalibriFont(12));
    m_pElapsed = new QLabel(this);
    m_pElapsed->setObjectName("m_pElapsed");
    m_pElapsed->setFont(CalibriFont(18, QFont::Bold));
    SetTextColor(m_pElapsed, Qt::red); // like the record page's status
    m_pElapsed->setAlignment(Qt::AlignCenter);
    ShowElapsed(0);
    connect(&m_panel, SIGNAL(answered()), this, SLOT(LookForTray()));

    auto* buttons = new QHBoxLayout;
    connect(AddButton(buttons, tr("Stop"), this), SIGNAL(clicked()), this, SIGNAL(stopClicked()));
    connect(AddButton(buttons, tr("Show window"), this), SIGNAL(clicked()), this,
            SLOT(ShowMainWindow()));

    auto* box = new QVBoxLayout(this);
    box->addWidget(text, 0, Qt::AlignCenter);
    box->addWidget(m_pElapsed);
    box->addLayout(buttons);
}

void TrayStandIn::FollowTray()
{
    if (!m_sinceStep.isValid() && PanelProbe::Answers()) {
        LookForTray();
    } else if (!m_bAsked && (!m_sinceStep.isValid() || m_sinceStep.hasExpired(kLookMs))) {
        m_bAsked = true;
        m_sinceStep.start();
        m_panel.Ask();
    } else if (m_bAsked && m_sinceStep.hasExpired(kPatienceMs)) {
        m_bHasTray = false; // it hangs, and its icons with it
    }
    if (m_bHasTray) {
        hide();
    } else if (!isVisible()) {
        // Without an explicit size the window would be resized after it is minimised and mapped
        // again, which restores it.
        setFixedSize(sizeHint());
        // Some desktops show it at once and give it the keyboard, in the middle of what somebody
        // types: then no button has the focus.
        setFocus();
        showMinimized();
    }
}

// Qt asks the panel as well, but waits for the answer. It has just given one.
void TrayStandIn::LookForTray()
{
    m_bHasTray = QSystemTrayIcon::isSystemTrayAvailable();
    m_bAsked = false;
    m_sinceStep.start();
}

void TrayStandIn::ShowElapsed(quint32 milliseconds)
{
    m_pElapsed->setText(FromEightBit(GetTimeStringA(milliseconds / 1000)));
}

// Closed, not ignored: a refused close would stop the user from logging out. It is back with the
// next FollowTray().
void TrayStandIn::closeEvent(QCloseEvent* /*event*/)
{
    if (!qGuiApp->isSavingSession()) {
        Q_EMIT activated(QSystemTrayIcon::Trigger);
    }
}

// Not every desktop tells whether the window is minimised, and some do not minimise it at all.
void TrayStandIn::ShowMainWindow()
{
    showMinimized();
    Q_EMIT activated(QSystemTrayIcon::Trigger);
}
