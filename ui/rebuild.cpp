#include "ui/drui.h"
#include "ui/page_parts.h"
#include "ui/video_table.h"

#include <QLineEdit>
#include <QStackedLayout>

#include <utility>

// Rebuilds the pages for another window size and keeps the contents of their tables.

namespace {

using Rows = QVector<_MERGER_FILE_INFO_>;

QString CellText(const QTableWidget* table, int row, int column)
{
    const QTableWidgetItem* cell = table->item(row, column);
    return cell == nullptr ? QString() : cell->text();
}

Rows RowsOf(const QTableWidget* table)
{
    Rows rows(table->rowCount());
    for (int row = 0; row < table->rowCount(); ++row) {
        CopyWide(CellText(table, row, 0), rows[row].szFileName);
        CopyWide(CellText(table, row, 1), rows[row].szSize);
        CopyWide(CellText(table, row, 2), rows[row].szTime);
    }
    return rows;
}

QStringList Texts(const _MERGER_FILE_INFO_& row)
{
    return {QString::fromWCharArray(row.szFileName), QString::fromWCharArray(row.szSize),
            QString::fromWCharArray(row.szTime)};
}

} // namespace

// Resets every page: Merge is disabled whatever the list contains, the settings are read and the
// capture devices listed again. This is intended.
void DRUI::RebuildPages()
{
    const int page = m_pStack->currentIndex();
    const Rows cut = RowsOf(m_pCutVideoTable);
    const Rows source = RowsOf(m_pSourceVideoTable);
    m_vecMergerFileInfo = RowsOf(m_pTargetVideoTable);
    WatchFolderFields(false); // deleting a focused field counts as leaving it
    BuildPages();
    for (const _MERGER_FILE_INFO_& row : cut) {
        AppendCutRow(QString::fromWCharArray(row.szFileName));
    }
    for (const _MERGER_FILE_INFO_& row : source) {
        AppendSourceRow(Texts(row));
    }
    for (const _MERGER_FILE_INFO_& row : std::as_const(m_vecMergerFileInfo)) {
        AppendTargetRow(Texts(row));
    }
    WatchFolderFields(true);
    m_pStack->setCurrentIndex(page);
}
