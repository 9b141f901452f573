#include "jobs/duration.h"
#include "jobs/job_report.h"
#include "jobs/text_codec.h"
#include "jobs/tool_runner.h"
#include "ui/directory_chooser.h"
#include "ui/drui.h"
#include "ui/input_block.h"
#include "ui/page_parts.h"
#include "ui/position_slider.h"
#include "ui/styles.h"
#include "ui/video_table.h"
#include "util/format.h"

#include <QDebug>
#include <QLineEdit>
#include <QScrollBar>

#include <utility>

namespace {

constexpr FolderRowShape kFolderRow{"m_pLayout3DirEdit", 12, {10, 0, 125, 25}, {135, 0, 420, 25},
                                    {565, 0, 30, 25},    645};

constexpr int kPanelLeft = 280; // the rest of the width is for the help text
constexpr auto kHelpText = "\n\n\n\n\n\t\t1.Select the video in the list on the left"
                           "\n\n\t\t2.Move the slider to set \"Start\" and \"End\""
                           "\n\n\t\t3.Select \"Cut\" to save the cut video.";
constexpr auto kNoMark = "00:00";

QString TimeText(qint64 seconds)
{
    return FromEightBit(GetTimeStringA(seconds));
}

// White on the page's dark grey.
QTableWidgetItem* CutItem(const QString& name)
{
    auto* item = new QTableWidgetItem(QIcon(":/image/mp4.png"), name);
    item->setForeground(QColor(255, 255, 255, 255));
    return item;
}

QString NameOf(const _FILE_INFO_& file)
{
    return QString::fromWCharArray(file.szFileName);
}

} // namespace

void DRUI::InitLayout3Widget()
{
    delete m_pLayout3Widget;
    auto* widget = new Page(this, ui.centralWidget);
    m_pLayout3Widget = widget;
    m_pLayout3Widget->setObjectName("m_pLayout3Widget");

    auto* page = BareLayout<QVBoxLayout>();
    page->addLayout(
        CreateHeader(m_pLayout3Widget, {width(), width() - 100, 100, Qt::KeepAspectRatio}));
    page->addSpacing(6);
    page->addLayout(CreateFolderRow(m_pLayout3Widget, kFolderRow, SLOT(btnSlotLayout3Dir())));
    page->addSpacing(8);
    m_pLayout3DirEdit = m_pLayout3Widget->findChild<QLineEdit*>(kFolderRow.fieldName);
    m_pCutVideoTable = CreateCutVideoTable();
    widget->SetFieldToLeave(m_pLayout3DirEdit, m_pCutVideoTable);
    auto* middle = BareLayout<QHBoxLayout>();
    middle->setContentsMargins(20, 0, 20, 0);
    middle->addWidget(m_pCutVideoTable);
    middle->addSpacing(8);
    middle->addWidget(CreateCutPanel());
    page->addLayout(middle, 1);

    page->addLayout(CreateCutBar());
    page->addWidget(CreateFooter(m_pLayout3Widget, {width(), true, true}));
    m_pLayout3Widget->setLayout(page);
}

VideoTable* DRUI::CreateCutVideoTable()
{
    VideoTable* table = CreateVideoTable(m_pLayout3Widget, {QString()});
    table->setObjectName("m_pCutVideoTable");
    table->setColumnWidth(0, 180);
    table->setMinimumSize(200, 100);
    table->setAccessibleName("Videos");
    table->verticalScrollBar()->setStyleSheet(dark_scroll_style);
    table->horizontalScrollBar()->setStyleSheet(dark_scroll_style);
    connect(table, SIGNAL(itemClicked(QTableWidgetItem*)), this,
            SLOT(CutTableItemClick(QTableWidgetItem*)));
    connect(table, SIGNAL(itemDoubleClicked(QTableWidgetItem*)), this,
            SLOT(CutTableItemDoubleClick(QTableWidgetItem*)));
    return table;
}

// Right of the table: instructions, and below them the slider.
QWidget* DRUI::CreateCutPanel()
{
    auto* panel = new QWidget(m_pLayout3Widget);
    panel->setAttribute(Qt::WA_StyledBackground);
    auto* help = new QLabel(kHelpText, panel);
    help->setObjectName("m_pCutHelp");
    help->setTextFormat(Qt::PlainText);
    help->setFont(CalibriFont(17));
    help->setAlignment(Qt::AlignLeft);
    help->setMinimumSize(width() - 300, 300);
    m_pCutPosLabel =
        CreateText(panel, {}, TimeText(0) + '/' + TimeText(0), CalibriFont(12, QFont::Bold));
    m_pCutPosLabel->setObjectName("m_pCutPosLabel");
    m_pCutPosLabel->setAlignment(Qt::AlignRight);
    m_pCutSlider = new PositionSlider(panel);
    m_pCutSlider->setObjectName("m_pCutSlider");
    m_pCutSlider->setStyleSheet(slider_style);
    m_pCutSlider->setAccessibleName("Position");
    m_pCutSlider->setAccessibleDescription("Seconds from the beginning of the video");
    connect(m_pCutSlider, SIGNAL(sliderMoved(int)), this, SLOT(current(int)));

    auto* lower = BareLayout<QVBoxLayout>();
    lower->setContentsMargins(20, 0, 20, 14);
    lower->addWidget(m_pCutPosLabel);
    lower->addSpacing(4);
    lower->addWidget(m_pCutSlider);
    auto* box = BareLayout<QVBoxLayout>();
    box->addWidget(help);
    box->addStretch();
    box->addLayout(lower);
    panel->setLayout(box);
    panel->setStyleSheet(panel_style);
    return panel;
}

// Below table and panel: Back, and under the slider the buttons that use its position.
QHBoxLayout* DRUI::CreateCutBar()
{
    const auto button = [this](const QString& text, const char* slot) {
        QPushButton* made = CreateBarButton(m_pLayout3Widget, {}, text);
        made->setFixedSize(100, 35);
        connect(made, SIGNAL(clicked()), this, slot);
        return made;
    };
    const auto mark = [this](const char* name) {
        QLabel* made = CreateText(m_pLayout3Widget, {}, kNoMark, CalibriFont(12, QFont::Bold));
        made->setObjectName(name);
        made->setFixedWidth(80);
        SetTextColor(made, Qt::white);
        return made;
    };
    QPushButton* back = button(kBack, SLOT(btnSlotBack()));
    m_pBtnPlay = button("Play", SLOT(btnLayout3Play()));
    m_pBtnPlay->setIcon(QIcon(":/image/play.png"));
    m_pBtnHead = button("Start", SLOT(btnSetHead()));
    m_pHeadLabel = mark("m_pHeadLabel");
    m_pBtnTail = button("End", SLOT(btnSetTail()));
    m_pTailLabel = mark("m_pTailLabel");
    m_pBtnCut = button("Cut", SLOT(btnSlotLayout3Cut()));
    m_pBtnCut->setIcon(QIcon(":/image/cut.png"));
    // Cut is enabled until a video is selected. This is intended.
    for (QPushButton* disabled : {m_pBtnPlay, m_pBtnHead, m_pBtnTail}) {
        disabled->setEnabled(false);
    }
    m_pBtnPlay->setObjectName("m_pBtnPlay");
    m_pBtnHead->setObjectName("m_pBtnHead");
    m_pBtnTail->setObjectName("m_pBtnTail");
    m_pBtnCut->setObjectName("m_pBtnCut");

    auto* bar = BareLayout<QHBoxLayout>();
    bar->setContentsMargins(20, 6, 20, 6);
    bar->setSpacing(10);
    bar->addWidget(back);
    bar->addSpacing(kPanelLeft - 20 - 100 - 10);
    bar->addWidget(m_pBtnPlay);
    bar->addStretch(1);
    bar->addWidget(m_pBtnHead);
    bar->addWidget(m_pHeadLabel);
    bar->addSpacing(10);
    bar->addWidget(m_pBtnTail);
    bar->addWidget(m_pTailLabel);
    bar->addStretch(1);
    bar->addWidget(m_pBtnCut);
    return bar;
}

void DRUI::AppendCutRow(const QString& name)
{
    const int row = m_pCutVideoTable->rowCount();
    m_pCutVideoTable->insertRow(row);
    if (!name.isEmpty()) { // an empty row kept across a rebuild
        m_pCutVideoTable->setItem(row, 0, CutItem(name));
    }
}

// A cancelled chooser empties the field, and the root directory is listed. Writes every name to the
// first row, which ends up with the oldest file; the other rows are empty. Both are intended.
void DRUI::btnSlotLayout3Dir()
{
    if (IsBusy()) {
        return;
    }
    m_pLayout3DirEdit->setText(ChooseDirectory(this));
    const InputBlock block = BeginReading();
    ListFolder(m_pLayout3DirEdit->text());
    m_pCutVideoTable->setRowCount(0);
    m_pCutVideoTable->setRowCount(static_cast<int>(m_vecFileInfo.size()));
    for (const _FILE_INFO_& file : std::as_const(m_vecFileInfo)) {
        m_pCutVideoTable->setItem(0, 0, CutItem(NameOf(file)));
    }
    m_pBtnAdd->setEnabled(false);
}

// Looks for the file in the folder the field names, whichever one the table lists. The last
// position stays that of the previous video. Both are intended.
void DRUI::CutTableItemClick(QTableWidgetItem* /*pItem*/)
{
    if (IsBusy()) {
        return;
    }
    const auto selected = m_pCutVideoTable->selectedItems();
    if (selected.isEmpty()) {
        m_pBtnPlay->setEnabled(false);
        m_pBtnCut->setEnabled(false);
        return;
    }
    m_strCutFile = m_pLayout3DirEdit->text() + '/' + selected.first()->text();
    qDebug() << m_strCutFile;
    m_pBtnPlay->setEnabled(true);
    m_pBtnHead->setEnabled(true);
    m_pBtnTail->setEnabled(false);
    m_pBtnCut->setEnabled(false);

    const InputBlock block = BeginReading();
    std::wstring path = m_strCutFile.toStdWString();
    const QString duration = QString::fromStdString(GetVedioTimeSeconds(path.data()));
    m_nCutDuration = DurationSeconds(duration);
    m_pCutPosLabel->setText(TimeText(m_strCurPos.toLongLong()) + '/' + duration);
    SetCutRange();
    m_pCutSlider->setValue(0);
    m_pHeadLabel->setText(kNoMark);
    m_pTailLabel->setText(kNoMark);
    m_pBtnCut->setEnabled(false);
}

void DRUI::SetCutRange()
{
    m_fDuration = static_cast<float>(m_nCutDuration);
    m_pCutSlider->setRange(0, static_cast<int>(m_nCutDuration));
}

void DRUI::current(int pos)
{
    if (m_pPlayerProcess->isOpen()) {
        m_pPlayerProcess->write("-ss " + QByteArray::number(pos) + " \r\n");
        if (m_pBtnPlay->text() == "Play") {
            m_pPlayerProcess->write("p\r\n");
        }
    }
    m_pCutSlider->setValue(pos);
    m_strCurPos = QString::number(pos);
    m_pCutPosLabel->setText(TimeText(pos) + '/' + TimeText(m_nCutDuration));
}

// The marks do not check each other: the tool refuses an end before the start.
void DRUI::btnSetHead()
{
    m_nCutStart = m_strCurPos.toLongLong();
    m_pHeadLabel->setText(TimeText(m_nCutStart));
    m_pBtnTail->setEnabled(true);
}

void DRUI::btnSetTail()
{
    m_nCutEnd = m_strCurPos.toLongLong();
    m_pTailLabel->setText(TimeText(m_nCutEnd));
    m_pBtnCut->setEnabled(true);
}

// The hooks for a preview player, which nothing starts. They stay on purpose.
void DRUI::mplayerDataRecieve()
{
    const QString duration = QString::fromStdString(FindDuration(ReadToolText(*m_pPlayerProcess)));
    if (duration.isEmpty()) {
        return;
    }
    m_nCutDuration = DurationSeconds(duration);
    m_pCutPosLabel->setText(TimeText(m_strCurPos.toLongLong()) + '/' + TimeText(m_nCutDuration));
    SetCutRange();
}

void DRUI::btnLayout3Play() {}
void DRUI::CutTableItemDoubleClick(QTableWidgetItem* /*pItem*/) {}
