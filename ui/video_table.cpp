#include "ui/video_table.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QStyledItemDelegate>

namespace {

// The cell that has the focus would be tinted, selected or not.
class RowDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        option->state &= ~QStyle::State_HasFocus;
    }
};

} // namespace

VideoTable::VideoTable(QWidget* parent) : QTableWidget(parent)
{
    setTabKeyNavigation(false);
    setHorizontalScrollMode(ScrollPerPixel); // a single column is one item
    setItemDelegate(new RowDelegate(this));
}

// Resizing to the contents takes the stretch from the last column. Set to what it is already, the
// property does nothing. A single column would be shrunk to the table and the end of a long name
// could not be scrolled to.
void VideoTable::FitColumns()
{
    horizontalHeader()->setMinimumSectionSize(-1); // back to the style's
    resizeColumnsToContents();
    if (columnCount() == 1) {
        horizontalHeader()->setMinimumSectionSize(columnWidth(0));
    }
    if (horizontalHeader()->length() < viewport()->width()) {
        horizontalHeader()->setStretchLastSection(false);
        horizontalHeader()->setStretchLastSection(true);
    }
}

void VideoTable::keyPressEvent(QKeyEvent* event)
{
    const auto selected = selectedIndexes();
    bool pressed = event->key() == Qt::Key_Space || event->key() == Qt::Key_Return ||
                   event->key() == Qt::Key_Enter;
    if (selected.isEmpty() && event->key() == Qt::Key_Down) {
        pressed = true; // with nothing selected, Down goes to the row that it would start from
    } else {
        QTableWidget::keyPressEvent(event);
    }
    if (pressed && currentItem() != nullptr) {
        selectRow(currentRow());
        event->accept();
    }
    // Otherwise the buttons would not act on the row shown as selected.
    if (currentItem() != nullptr && (pressed || selectedIndexes() != selected)) {
        Q_EMIT itemClicked(currentItem());
    }
}
