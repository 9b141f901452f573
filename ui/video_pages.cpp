#include "ui/drui.h"
#include "ui/page_parts.h"
#include "ui/styles.h"

#include <QLineEdit>

// Shared by the cut and merge pages: the row with the folder.

QHBoxLayout* DRUI::CreateFolderRow(QWidget* page, const FolderRowShape& shape, const char* slot)
{
    const QFont font = CalibriFont(shape.points, QFont::Bold);
    auto* holder = new QLabel(page);
    holder->setMinimumSize(300, 25);
    CreateText(holder, shape.label, "Video directory: ", font);

    auto* field = new QLineEdit(holder);
    field->setObjectName(shape.fieldName);
    field->setGeometry(shape.field);
    field->setFont(font);
    field->setText(m_pSaveDirEdit->text());
    field->setCursorPosition(1);
    field->setAccessibleName("Video directory");
    field->setStyleSheet(field_style);
    QPushButton* folder = CreateFolderButton(holder, shape.button);
    folder->setCursor(Qt::PointingHandCursor);
    connect(folder, SIGNAL(clicked()), this, slot);
    holder->setStyleSheet(panel_style);

    auto* row = new QHBoxLayout;
    row->setContentsMargins(20, 0, 20, 0);
    row->addWidget(holder);
    row->addSpacing(width() - shape.widthLeft);
    return row;
}
