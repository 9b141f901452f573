#pragma once

#include <QTableWidget>

// A table in which the keyboard counts like the mouse: selecting a row with the arrow keys, or
// pressing Space, Return or Enter on it, emits itemClicked(). Tab leaves the table.
// Only selected rows are highlighted, not the current one.
class VideoTable : public QTableWidget
{
    Q_OBJECT

public:
    explicit VideoTable(QWidget* parent);

    /// Makes every column as wide as its contents, and the last one fill the rest of the table.
    void FitColumns();

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

/// A read-only table of the cut or the merge page, with these columns. One whole row can be
/// selected at a time.
VideoTable* CreateVideoTable(QWidget* page, const QStringList& labels);
