#include "ui/drui.h"
#include "ui/page_parts.h"

#include <QLineEdit>

// The merge page has its frame and its folder field; the slots of the controls that are not on it
// yet have nothing to act on.

void DRUI::InitLayout4Widget()
{
    delete m_pLayout4Widget;
    m_pLayout4Widget = new QWidget(this);
    m_pLayout4Widget->setObjectName("m_pLayout4Widget");
    m_pLayout4DirEdit = CreateFolderPage(m_pLayout4Widget, 100);
    m_pLayout4DirEdit->setObjectName("m_pLayout4DirEdit");
}

void DRUI::btnAddSlot() {}
void DRUI::btnUpSlot() {}
void DRUI::btnDownSlot() {}
void DRUI::btnDelSlot() {}
void DRUI::btnSlotLayout4Dir() {}
void DRUI::btnSlotLayout4Merge() {}
void DRUI::SourceTableItemClick(QTableWidgetItem* /*pItem*/) {}
void DRUI::SourceTableItemDoubleClick(QTableWidgetItem* /*pItem*/) {}
void DRUI::TargetTableItemClick(QTableWidgetItem* /*pItem*/) {}
void DRUI::ReadMergeInfo() {}
void DRUI::ReadChange2TSInfo() {}
