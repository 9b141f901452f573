#include "jobs/text_codec.h"
#include "ui/directory_chooser.h"
#include "ui/drui.h"
#include "ui/input_block.h"
#include "ui/page_parts.h"
#include "ui/styles.h"
#include "ui/video_table.h"
#include "util/format.h"

#include <QLineEdit>

namespace {

constexpr FolderRowShape kFolderRow{"m_pLayout4DirEdit", 11, {10, 0, 100, 25}, {120, 0, 240, 25},
                                    {383, 0, 30, 25},    450};
constexpr int kMostFiles = 20;
constexpr int kNameWidth = 180;

// Sets the texts of a row: file name, size, duration.
void SetRow(QTableWidget* table, int row, const QStringList& texts)
{
    table->setItem(row, 0, new QTableWidgetItem(QIcon(":/image/mp4.png"), texts.value(0)));
    table->setItem(row, 1, new QTableWidgetItem(texts.value(1)));
    table->setItem(row, 2, new QTableWidgetItem(texts.value(2)));
}

// Exchanges the text of a cell, but not its icon, with the same column in row `other`, and moves
// the selection there.
void MoveCell(QTableWidget* table, QTableWidgetItem* cell, int other)
{
    QTableWidgetItem* neighbour = table->item(other, cell->column());
    const QString text = cell->text();
    cell->setText(neighbour->text());
    neighbour->setText(text);
    cell->setSelected(false);
    neighbour->setSelected(true);
}

} // namespace

void DRUI::InitLayout4Widget()
{
    delete m_pLayout4Widget;
    auto* widget = new Page(this, ui.centralWidget);
    m_pLayout4Widget = widget;
    m_pLayout4Widget->setObjectName("m_pLayout4Widget");

    auto* page = BareLayout<QVBoxLayout>();
    page->addLayout(
        CreateHeader(m_pLayout4Widget, {width(), width() - 100, 100, Qt::KeepAspectRatio}));
    page->addSpacing(3);
    page->addLayout(CreateFolderRow(m_pLayout4Widget, kFolderRow, SLOT(btnSlotLayout4Dir())));
    m_pLayout4DirEdit = m_pLayout4Widget->findChild<QLineEdit*>(kFolderRow.fieldName);
    page->addSpacing(2);
    page->addLayout(CreateMergeTables());
    widget->SetFieldToLeave(m_pLayout4DirEdit, m_pSourceVideoTable);
    page->addSpacing(4);
    auto* bottom = BareLayout<QVBoxLayout>();
    bottom->addWidget(CreateMergeBar());
    bottom->addWidget(CreateFooter(m_pLayout4Widget, {width(), true, false}));
    page->addLayout(bottom);
    m_pLayout4Widget->setLayout(page);
}

QHBoxLayout* DRUI::CreateMergeTables()
{
    const auto button = [this](const QString& text, const QString& image, const char* slot) {
        auto* made = new QPushButton(QIcon(image), text, m_pLayout4Widget);
        made->setMinimumSize(60, 25);
        made->setFont(CalibriFont(11, QFont::Bold));
        made->setCursor(Qt::PointingHandCursor);
        made->setAutoDefault(true);
        made->setEnabled(false);
        made->setStyleSheet(main_button_style);
        connect(made, SIGNAL(clicked()), this, slot);
        return made;
    };
    m_pSourceVideoTable = CreateSourceVideoTable();
    m_pBtnAdd = button("Add", ":/image/add.png", SLOT(btnAddSlot()));
    m_pTargetVideoTable = CreateTargetVideoTable();
    m_pBtnUp = button("Up", ":/image/up.png", SLOT(btnUpSlot()));
    m_pBtnDown = button("Down", ":/image/down.png", SLOT(btnDownSlot()));
    m_pBtnDel = button("Delete", ":/image/delete.png", SLOT(btnDelSlot()));

    m_pBtnAdd->setObjectName("m_pBtnAdd");
    m_pBtnUp->setObjectName("m_pBtnUp");
    m_pBtnDown->setObjectName("m_pBtnDown");
    m_pBtnDel->setObjectName("m_pBtnDel");

    // A button's size hint does not include the round border of its style.
    constexpr int roundEnds = 10;
    auto* add = new QVBoxLayout;
    add->addStrut(m_pBtnAdd->sizeHint().width() + roundEnds);
    add->addStretch(5);
    add->addWidget(m_pBtnAdd);
    add->addStretch(5);
    auto* order = new QVBoxLayout;
    order->addStrut(m_pBtnDel->sizeHint().width() + roundEnds);
    order->addStretch(5);
    order->addWidget(m_pBtnUp);
    order->addSpacing(4);
    order->addWidget(m_pBtnDown);
    order->addSpacing(4);
    order->addWidget(m_pBtnDel);
    order->addStretch(5);

    auto* tables = new QHBoxLayout;
    tables->setContentsMargins(20, 0, 20, 0);
    tables->addWidget(m_pSourceVideoTable);
    tables->addSpacing(4);
    tables->addLayout(add);
    tables->addSpacing(4);
    tables->addWidget(m_pTargetVideoTable);
    tables->addSpacing(4);
    tables->addLayout(order);
    return tables;
}

VideoTable* DRUI::CreateMergeTable(const char* name, int nameWidth)
{
    VideoTable* table = CreateVideoTable(m_pLayout4Widget, {"FileName", "Size", "Time"});
    table->setObjectName(name);
    table->setMinimumSize(200, 180);
    table->setColumnWidth(0, nameWidth);
    table->setStyleSheet(panel_style);
    return table;
}

VideoTable* DRUI::CreateSourceVideoTable()
{
    VideoTable* table = CreateMergeTable("m_pSourceVideoTable", kNameWidth);
    table->setAccessibleName("Videos");
    connect(table, SIGNAL(itemClicked(QTableWidgetItem*)), this,
            SLOT(SourceTableItemClick(QTableWidgetItem*)));
    connect(table, SIGNAL(itemDoubleClicked(QTableWidgetItem*)), this,
            SLOT(SourceTableItemDoubleClick(QTableWidgetItem*)));
    return table;
}

VideoTable* DRUI::CreateTargetVideoTable()
{
    VideoTable* table = CreateMergeTable("m_pTargetVideoTable", 80);
    table->setAccessibleName("Merge list");
    connect(table, SIGNAL(itemClicked(QTableWidgetItem*)), this,
            SLOT(TargetTableItemClick(QTableWidgetItem*)));
    return table;
}

QWidget* DRUI::CreateMergeBar()
{
    auto* bar = new QLabel(m_pLayout4Widget);
    bar->setMinimumSize(width(), 40);
    QPushButton* back = CreateBarButton(bar, {20, 2, 100, 35}, kBack);
    back->setFont(CalibriFont(11, QFont::Bold));
    connect(back, SIGNAL(clicked()), this, SLOT(btnSlotBack()));
    m_pBtnMerge = CreateBarButton(bar, {width() - 180, 2, 100, 35}, "Merge");
    m_pBtnMerge->setFont(CalibriFont(11, QFont::Bold));
    m_pBtnMerge->setObjectName("m_pBtnMerge");
    m_pBtnMerge->setEnabled(false);
    connect(m_pBtnMerge, SIGNAL(clicked()), this, SLOT(btnSlotLayout4Merge()));
    return bar;
}

QStringList DRUI::SourceTexts(const _FILE_INFO_& file, const QString& duration)
{
    return {QString::fromWCharArray(file.szFileName), FromEightBit(GetFileSizeString(file.llSize)),
            duration};
}

void DRUI::AppendSourceRow(const QStringList& texts)
{
    const int row = m_pSourceVideoTable->rowCount();
    m_pSourceVideoTable->insertRow(row);
    if (!texts.first().isEmpty()) { // an empty row kept across a rebuild
        SetRow(m_pSourceVideoTable, row, texts);
    }
}

// Writes every file to the first row, which ends up with the oldest one; the other rows are empty.
// This is intended. The merge list stays, and its names now refer to the new folder.
void DRUI::btnSlotLayout4Dir()
{
    if (IsBusy()) {
        return;
    }
    const QString folder = ChooseDirectory(this);
    if (folder.isNull()) {
        return;
    }
    m_pLayout4DirEdit->setText(folder);
    const InputBlock block = BeginReading();
    const bool isListed = ListFolder(folder);
    m_pSourceVideoTable->setRowCount(0);
    m_pSourceVideoTable->setRowCount(static_cast<int>(m_vecFileInfo.size()));
    if (isListed) {
        ProbeFiles(folder, [this](const _FILE_INFO_& file, const QString& duration) {
            SetRow(m_pSourceVideoTable, 0, SourceTexts(file, duration));
        });
    }
    m_pBtnAdd->setEnabled(false);
}

void DRUI::SourceTableItemClick(QTableWidgetItem* /*pItem*/)
{
    m_pBtnAdd->setEnabled(m_pSourceVideoTable->selectedItems().size() > 2);
}

void DRUI::SourceTableItemDoubleClick(QTableWidgetItem* /*pItem*/)
{
    btnAddSlot();
}

void DRUI::btnAddSlot()
{
    if (m_pTargetVideoTable->rowCount() >= kMostFiles) {
        Inform("You can merge multiple files no more than 20 files at one time");
        EnableMerge(); // after a rebuild the list is full and the button still disabled
        return;
    }
    const auto selected = m_pSourceVideoTable->selectedItems();
    if (selected.size() > 2) {
        AppendTargetRow({selected.at(0)->text(), selected.at(1)->text(), selected.at(2)->text()});
    }
    EnableMerge();
}

void DRUI::AppendTargetRow(const QStringList& texts)
{
    const int row = m_pTargetVideoTable->rowCount();
    m_pTargetVideoTable->insertRow(row);
    m_pTargetVideoTable->setColumnWidth(0, kNameWidth);
    SetRow(m_pTargetVideoTable, row, texts);
}

void DRUI::EnableMerge()
{
    m_pBtnMerge->setEnabled(m_pTargetVideoTable->rowCount() >= 2);
}

void DRUI::TargetTableItemClick(QTableWidgetItem* /*pItem*/)
{
    for (const QTableWidgetItem* cell : m_pTargetVideoTable->selectedItems()) {
        m_pBtnUp->setEnabled(cell->row() != 0);
        m_pBtnDown->setEnabled(cell->row() < m_pTargetVideoTable->rowCount() - 1);
        m_pBtnDel->setEnabled(true);
    }
}

// In the first row this disables Up and leaves Down as it was. This is intended, as is the reverse
// for Down.
void DRUI::btnUpSlot()
{
    const int last = m_pTargetVideoTable->rowCount() - 1;
    for (QTableWidgetItem* cell : m_pTargetVideoTable->selectedItems()) {
        const int row = cell->row();
        if (row == 0) {
            continue;
        }
        MoveCell(m_pTargetVideoTable, cell, row - 1);
        if (row < 2) {
            m_pBtnUp->setEnabled(false);
        } else if (row - 1 < last) {
            m_pBtnDown->setEnabled(true);
        }
    }
}

void DRUI::btnDownSlot()
{
    const int last = m_pTargetVideoTable->rowCount() - 1;
    for (QTableWidgetItem* cell : m_pTargetVideoTable->selectedItems()) {
        const int row = cell->row();
        if (row >= last) {
            continue;
        }
        MoveCell(m_pTargetVideoTable, cell, row + 1);
        if (row + 1 < last) {
            m_pBtnUp->setEnabled(true);
        } else {
            m_pBtnDown->setEnabled(false);
        }
    }
}

// Deletes one row. Up, Down and Delete keep their states on purpose.
void DRUI::btnDelSlot()
{
    const auto selected = m_pTargetVideoTable->selectedItems();
    if (!selected.isEmpty()) {
        m_pTargetVideoTable->removeRow(selected.first()->row());
    }
    EnableMerge();
}
