#include "jobs/folder_listing.h"
#include "jobs/tool_runner.h"
#include "ui/drui.h"
#include "ui/input_block.h"
#include "ui/page_parts.h"
#include "ui/video_table.h"

#include <QEventLoop>
#include <QGuiApplication>
#include <QLineEdit>
#include <QStackedLayout>

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

// Whether slots must not start anything that waits.
bool DRUI::IsBusy() const
{
    return m_entering != Entry::None || InputBlock::IsOn();
}

// The page is shown when its folder has been read. Until then the home page takes all input: its
// other entries leave the scan, and the one clicked last is entered.
void DRUI::Enter(Entry entry)
{
    if (m_entering != Entry::None) {
        if (entry != m_entering || m_bStopScan) {
            LeaveScan();
            m_nextEntry = entry;
        }
        return;
    }
    if (IsBusy()) {
        return;
    }
    QGuiApplication::setOverrideCursor(Qt::BusyCursor);
    m_nextEntry = entry;
    while (m_nextEntry != Entry::None) {
        m_entering = std::exchange(m_nextEntry, Entry::None);
        m_bStopScan = false;
        const bool isCut = m_entering == Entry::Cut;
        const QString folder = m_pLayout4DirEdit->text(); // for both, which is intended
        if (isCut ? FillCutTable(folder) : FillSourceTable(folder)) {
            // With focus in the folder field, the next click elsewhere would scan it again.
            (isCut ? m_pCutVideoTable : m_pSourceVideoTable)->setFocus();
            m_pStack->setCurrentWidget(isCut ? m_pLayout3Widget : m_pLayout4Widget);
        }
    }
    m_entering = Entry::None;
    QGuiApplication::restoreOverrideCursor();
}

// A page shows its folder's files as they are probed. While this block is on, the window lives but
// takes no other input than Back, which leaves what is waited for.
InputBlock DRUI::BeginReading()
{
    m_bStopScan = false;
    return {*this, InputBlock::Input::Deferred, BackButtons(*this)};
}

// Whatever answers after this comes too late.
void DRUI::LeaveScan()
{
    m_bStopScan = true;
    m_nextEntry = Entry::None;
    if (m_pListLoop != nullptr) {
        m_pListLoop->quit();
    }
    LeaveTool(*m_pDevProcess);
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
        if (!folder.isEmpty() && !IsBusy()) {
            const InputBlock block = BeginReading();
            watched == m_pLayout3DirEdit ? FillCutTable(folder) : FillSourceTable(folder);
        }
        m_pBtnAdd->setEnabled(false);
    }
    return QMainWindow::eventFilter(watched, event);
}
