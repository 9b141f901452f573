#include "jobs/folder_listing.h"
#include "ui/drui.h"
#include "ui/input_block.h"
#include "ui/page_parts.h"
#include "ui/video_table.h"

#include <QEventLoop>
#include <QLineEdit>

#include <utility>

// The folder scans of the cut and merge pages, and the folder fields' reaction to focus changes.

namespace {

// Of all pages.
QList<QAbstractButton*> BackButtons(const QWidget& window)
{
    QList<QAbstractButton*> found;
    for (QPushButton* button : window.findChildren<QPushButton*>()) {
        if (button->text() == kBack) {
            found << button;
        }
    }
    return found;
}

} // namespace

// While this block is on, the window lives but takes no other input than Back, which ends the scan
// early.
InputBlock DRUI::BeginScan()
{
    m_bStopScan = false;
    return {*this, InputBlock::Input::Deferred, BackButtons(*this)};
}

// Lists the folder's files in m_vecFileInfo. Returns whether that came to its end.
bool DRUI::ListFolder(const QString& folder)
{
    QEventLoop loop;
    m_pListLoop = &loop;
    const auto files = ListNewestFirst(folder, loop);
    m_pListLoop = nullptr;
    m_vecFileInfo = files.value_or(QVector<_FILE_INFO_>());
    return files.has_value() && !m_bStopScan;
}

// Calls `show` with each file of the last listing and its duration. Returns whether it came to its
// end.
bool DRUI::ProbeFiles(const QString& folder,
                      const std::function<void(const _FILE_INFO_&, const QString&)>& show)
{
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

// Probes every file for its duration, which is not shown.
bool DRUI::FillCutTable(const QString& folder)
{
    const InputBlock block = BeginScan();
    const bool isListed = ListFolder(folder);
    m_pCutVideoTable->setRowCount(0);
    const bool isWhole = isListed && ProbeFiles(folder, [this](const _FILE_INFO_& file,
                                                               const QString& /*duration*/) {
                             AppendCutRow(QString::fromWCharArray(file.szFileName));
                         });
    m_pCutVideoTable->FitColumns();
    return isWhole;
}

bool DRUI::FillSourceTable(const QString& folder)
{
    const InputBlock block = BeginScan();
    const bool isListed = ListFolder(folder);
    m_pSourceVideoTable->setRowCount(0);
    const bool isWhole =
        isListed && ProbeFiles(folder, [this](const _FILE_INFO_& file, const QString& duration) {
            AppendSourceRow(SourceTexts(file, duration));
        });
    m_pSourceVideoTable->FitColumns();
    return isWhole;
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
