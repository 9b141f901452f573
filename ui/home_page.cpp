#include "ui/drui.h"
#include "ui/page_parts.h"
#include "ui/styles.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QUrl>

namespace {

// The addresses are those of the help pages beside the program.
QUrl HelpPage(const QString& name)
{
    return QUrl::fromLocalFile(QCoreApplication::applicationDirPath() + "/help/" + name);
}

} // namespace

void DRUI::InitLayout1Widget()
{
    delete m_pLayout1Widget;
    m_pLayout1Widget = new Page(this, ui.centralWidget);
    m_pLayout1Widget->setObjectName("m_pLayout1Widget");
    const int stripWidth = width() - 1;
    // Created first: Tab follows the order of creation.
    QVBoxLayout* header =
        CreateHeader(m_pLayout1Widget, {stripWidth, stripWidth - 100, 101, Qt::IgnoreAspectRatio});

    auto* rows = BareLayout<QVBoxLayout>();
    for (QPushButton* entry : {
             CreateHomeEntry(
                 "The easiest screen recorder to capture any video or audio\n on your computer and "
                 "save them in high quality",
                 ":/image/rec.png", SLOT(btnSlot())),
             CreateHomeEntry("Merge your several capturing screen videos into one file",
                             ":/image/edit.png", SLOT(btnEditSlot())),
             CreateHomeEntry(
                 "Trim your capturing screen video by setting the start time\nand end time",
                 ":/image/cut_main.png", SLOT(btnMontageSlot())),
         }) {
        auto* row = BareLayout<QHBoxLayout>();
        row->addSpacing(100);
        row->addWidget(entry);
        row->addSpacing(100);
        rows->addLayout(row);
        rows->addStretch();
    }

    auto* page = BareLayout<QVBoxLayout>();
    page->addLayout(header);
    page->addStretch(1);
    page->addLayout(rows, 10); // without factors the rows get no space, and the entries touch
    page->addStretch(1);
    page->addWidget(CreateFooter(m_pLayout1Widget, {stripWidth, true, true}));
    m_pLayout1Widget->setLayout(page);
}

QPushButton* DRUI::CreateHomeEntry(const QString& text, const QString& picture, const char* slot)
{
    const QIcon icon(picture);
    const QSize size = icon.availableSizes().first(); // the finer picture comes second
    auto* entry = new QPushButton(text, m_pLayout1Widget);
    entry->setFlat(true);
    QPalette palette = entry->palette();
    palette.setColor(QPalette::ButtonText, QColor(54, 75, 75, 255));
    entry->setPalette(palette);
    entry->setFont(CalibriFont(11, QFont::Bold));
    entry->setCursor(Qt::PointingHandCursor);
    entry->setIcon(icon);
    entry->setIconSize(size);
    entry->resize(size);
    entry->setAutoDefault(true);
    entry->setStyleSheet(home_entry_style);
    connect(entry, SIGNAL(clicked()), this, slot);
    return entry;
}

void DRUI::btnAboutSlot()
{
    QDesktopServices::openUrl(HelpPage("about.html"));
}

void DRUI::btnSupportSlot()
{
    QDesktopServices::openUrl(HelpPage("support.html"));
}

void DRUI::btnHelpSlot()
{
    QDesktopServices::openUrl(HelpPage("help.html"));
}

void DRUI::btnOpenUrl(
    QString url) // NOLINT(performance-unnecessary-value-param): the slot's signature
{
    QDesktopServices::openUrl(QUrl(url));
}
