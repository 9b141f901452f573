#include "ui/drui.h"
#include "ui/page_parts.h"

#include <QLineEdit>

// The cut page has its frame and its folder field; the slots of the controls that are not on it yet
// have nothing to act on.

void DRUI::InitLayout3Widget()
{
    delete m_pLayout3Widget;
    m_pLayout3Widget = new QWidget(this);
    m_pLayout3Widget->setObjectName("m_pLayout3Widget");
    m_pLayout3DirEdit = CreateFolderPage(m_pLayout3Widget, 101);
    m_pLayout3DirEdit->setObjectName("m_pLayout3DirEdit");
}

void DRUI::btnSlotLayout3Dir() {}
void DRUI::btnSlotLayout3Cut() {}
void DRUI::btnSetHead() {}
void DRUI::btnSetTail() {}
void DRUI::CutTableItemClick(QTableWidgetItem* /*pItem*/) {}
void DRUI::current(int /*pos*/) {}
void DRUI::mplayerDataRecieve() {}
void DRUI::ReadCutInfo() {}

// These three do nothing, and are meant to: no preview is played, and no job runs on the job
// thread.
void DRUI::btnLayout3Play() {}
void DRUI::CutTableItemDoubleClick(QTableWidgetItem* /*pItem*/) {}

HRESULT DRUI::CutVedio(WCHAR* /*pSaveDir*/, int& /*nProcess*/)
{
    return 0;
}
