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
    // The row that was shown as selected would else not be the one that the page's buttons work on.
    if (currentItem() != nullptr && (pressed || selectedIndexes() != selected)) {
        Q_EMIT itemClicked(currentItem());
    }
}
