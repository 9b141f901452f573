#include "jobs/folder_scan.h"
#include "ui/drui.h"
#include "ui/input_block.h"
#include "ui/page_parts.h"
#include "ui/styles.h"
#include "ui/video_table.h"

#include <QHeaderView>
#include <QLineEdit>

#include <utility>

namespace {

// Of all pages.
QList<QWidget*> BackButtons(const QWidget& window)
{
    QList<QWidget*> found;
    for (QPushButton* button : window.findChildren<QPushButton*>()) {
        if (button->text() == kBack) {
            found << button;
        }
    }
    return found;
}

} // namespace

// Shared by the cut and merge pages: the row with the folder, the tables, the bar at the bottom,
// and the folder fields' reaction to focus changes.

QHBoxLayout* DRUI::CreateFolderRow(QWidget* page, const FolderRowShape& shape, const char* slot)
{
    const QFont font = CalibriFont(shape.points, QFont::Bold);
    auto* holder = new QLabel(page);
    holder->setMinimumSize(300, 25);
    CreateText(holder, shape.label, "Video directory: ", font);

    auto* field = new QLineEdit(holder);
    field->setObjectName(shape.fieldName);
    field->setGeometry(shape.field);
    field->setFont(font);
    field->setText(m_pSaveDirEdit->text());
    field->setCursorPosition(1);
    field->setAccessibleName("Video directory");
    field->setStyleSheet(field_style);
    QPushButton* folder = CreateFolderButton(holder, shape.button);
    folder->setCursor(Qt::PointingHandCursor);
    connect(folder, SIGNAL(clicked()), this, slot);
    holder->setStyleSheet(panel_style);

    auto* row = new QHBoxLayout;
    row->setContentsMargins(20, 0, 20, 0);
    row->addWidget(holder);
    row->addSpacing(width() - shape.widthLeft);
    return row;
}

// A read-only table in which one whole row can be selected at a time.
VideoTable* DRUI::CreateVideoTable(QWidget* page, const QStringList& labels)
{
    auto* table = new VideoTable(page);
    table->setFont(CalibriFont(11));
    table->horizontalHeader()->setFont(CalibriFont(11));
    table->setColumnCount(static_cast<int>(labels.size())); // uses the header's font
    table->setHorizontalHeaderLabels(labels);
    table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft);
    table->horizontalHeader()->setStretchLastSection(true);
    table->verticalHeader()->setVisible(false);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setWordWrap(false); // a wrapped name would lose the time after the date
    return table;
}

// Calls `show` with each file of the last scan and its duration. The window lives on, but takes no
// other input than Back, which ends it early. Returns whether it came to its end.
bool DRUI::ProbeFiles(const QString& folder,
                      const std::function<void(const _FILE_INFO_&, const QString&)>& show)
{
    const InputBlock block(*this, InputBlock::Input::Deferred, BackButtons(*this));
    m_bStopScan = false;
    for (const _FILE_INFO_& file : std::as_const(m_vecFileInfo)) {
        std::wstring path = folder.toStdWString() + L'/' + file.szFileName;
        const QString duration = QString::fromStdString(GetVedioTimeSeconds(path.data()));
        if (m_bStopScan || m_bIsEnding) {
            return false;
        }
        show(file, duration);
    }
    return true;
}

void DRUI::WatchFolderFields(bool watch)
{
    for (QLineEdit* field : {m_pLayout3DirEdit, m_pLayout4DirEdit}) {
        if (watch) {
            field->installEventFilter(this);
        } else {
            field->removeEventFilter(this);
        }
    }
}

// Rescans a folder when its field loses focus, on any page and for any reason but while a job or
// another scan runs. Disables Add for either field, which is intended.
bool DRUI::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::FocusOut &&
        (watched == m_pLayout3DirEdit || watched == m_pLayout4DirEdit)) {
        const QString folder = static_cast<QLineEdit*>(watched)->text();
        const bool isScanned = !folder.isEmpty() && !InputBlock::IsOn();
        if (isScanned && watched == m_pLayout3DirEdit) {
            FillCutTable(folder);
        } else if (isScanned) {
            FillSourceTable(folder);
        }
        m_pBtnAdd->setEnabled(false);
    }
    return QMainWindow::eventFilter(watched, event);
}
