#pragma once

#include <QTableWidget>

// A table in which the keyboard counts like the mouse: selecting a row with the arrow keys, or
// pressing Space, Return or Enter on it, emits itemClicked(). Tab leaves the table.
class VideoTable : public QTableWidget
{
    Q_OBJECT

public:
    explicit VideoTable(QWidget* parent);

protected:
    void keyPressEvent(QKeyEvent* event) override;
};
