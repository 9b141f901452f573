#include "ui/video_table.h"

#include "ui/styles.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QStyledItemDelegate>

namespace {

// Otherwise the focused cell would be tinted, selected or not.
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
    setHorizontalScrollMode(ScrollPerPixel); // a single column would scroll as one item
    setItemDelegate(new RowDelegate(this));
}

// Resizing to contents removes the stretch of the last column, and setting the property to its
// current value does nothing. A single column would shrink to the table, and the end of a long name
// could not be reached by scrolling.
void VideoTable::FitColumns()
{
    horizontalHeader()->setMinimumSectionSize(-1); // back to the style's default
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
        pressed = true; // with nothing selected, Down selects the current row
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

VideoTable* CreateVideoTable(QWidget* page, const QStringList& labels)
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
