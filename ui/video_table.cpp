#include "ui/video_table.h"

#include <QKeyEvent>

VideoTable::VideoTable(QWidget* parent) : QTableWidget(parent)
{
    setTabKeyNavigation(false);
}

void VideoTable::keyPressEvent(QKeyEvent* event)
{
    const auto selected = selectedIndexes();
    QTableWidget::keyPressEvent(event);
    const bool pressed = event->key() == Qt::Key_Space || event->key() == Qt::Key_Return ||
                         event->key() == Qt::Key_Enter;
    if (pressed && currentItem() != nullptr) {
        selectRow(currentRow());
        event->accept();
    }
    // Otherwise the buttons would not act on the row shown as selected.
    if (currentItem() != nullptr && (pressed || selectedIndexes() != selected)) {
        Q_EMIT itemClicked(currentItem());
    }
}
