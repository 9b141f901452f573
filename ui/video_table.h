#pragma once

#include <QTableWidget>

// A table for which a key counts as much as the mouse: choosing a row with the arrow keys, or
// pressing Space, Return or Enter on it, tells itemClicked(). Tab leaves the table.
class VideoTable : public QTableWidget
{
    Q_OBJECT

public:
    explicit VideoTable(QWidget* parent);

protected:
    void keyPressEvent(QKeyEvent* event) override;
};
