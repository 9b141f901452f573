#include "jobs/device_listing.h"
#include "jobs/settings.h"
#include "ui/directory_chooser.h"
#include "ui/drui.h"
#include "ui/free_space_label.h"
#include "ui/page_parts.h"
#include "ui/styles.h"

#include <QComboBox>
#include <QLineEdit>
#include <QStyledItemDelegate>

QLabel* DRUI::m_pStereoMix = nullptr;
QComboBox* DRUI::m_pAudioComBox = nullptr;
unsigned int DRUI::m_nSelectedDeviceID = 4294967295U;

void DRUI::InitLayout2Widget()
{
    delete m_pLayout2Widget;
    m_pLayout2Widget = new Page(this, ui.centralWidget);
    m_pLayout2Widget->setObjectName("m_pLayout2Widget");
    QVBoxLayout* header =
        CreateHeader(m_pLayout2Widget, {width(), width() - 100, 101, Qt::KeepAspectRatio});

    auto* center = new QVBoxLayout;
    center->setContentsMargins(50, 50, 50, 50);
    center->addWidget(CreateRecordPanel());

    auto* page = new QVBoxLayout;
    page->setContentsMargins(0, 0, 0, 0);
    page->addLayout(header);
    page->addStretch(3);
    page->addLayout(center);
    page->addStretch(3);
    page->addWidget(CreateRecordBar());
    page->addWidget(CreateFooter(m_pLayout2Widget, {width(), false, true}));
    m_pLayout2Widget->setLayout(page);
}

QWidget* DRUI::CreateRecordPanel()
{
    const QFont font = CalibriFont(12, QFont::Bold);
    auto* panel = new QLabel(m_pLayout2Widget);
    panel->setStyleSheet(panel_style);
    panel->setMinimumSize(300, 320);

    // Screen readers use the captions as the names of the controls after them.
    QLabel* audio = CreateText(panel, {50, 80, 120, 25}, "Audio: ", font);
    AddAudioChoices(panel);
    audio->setBuddy(m_pAudioComBox);
    QLabel* directory = CreateText(panel, {50, 120, 120, 25}, "Save directory: ", font);
    AddSaveDirectory(panel);
    directory->setBuddy(m_pSaveDirEdit);
    CreateText(panel, {50, 170, 200, 25}, "Free space: ", font);
    m_pFreeSpaceLabel = new FreeSpaceLabel("Unknow", panel);
    m_pFreeSpaceLabel->setGeometry(220, 170, 100, 25);
    m_pFreeSpaceLabel->setFont(font);
    m_pFreeSpaceLabel->setObjectName("m_pFreeSpaceLabel");
    m_pFreeSpaceLabel->ShowSpaceOf(m_pSaveDirEdit->text());
    CreateText(panel, {50, 220, 500, 50},
               "The best screen recorder & video editor that you can use to capture\n"
               "everything on your screen with original picture-in-picture",
               font);
    return panel;
}

void DRUI::AddAudioChoices(QWidget* panel)
{
    m_pAudioComBox = new QComboBox(panel);
    m_pAudioComBox->setObjectName("m_pAudioComBox");
    m_pAudioComBox->setGeometry(180, 80, 300, 25);
    m_pAudioComBox->setFont(CalibriFont(12, QFont::Bold));
    m_pAudioComBox->setAccessibleName("Audio");
    // Drawn as a menu, the list would show the current entry white on grey.
    m_pAudioComBox->setItemDelegate(new QStyledItemDelegate(m_pAudioComBox));
    connect(m_pAudioComBox, SIGNAL(currentIndexChanged(int)), this, SLOT(ComBoxIndexChange(int)));

    m_pStereoMix = CreateText(panel, {600, 50, 600, 150}, QString(), CalibriFont(18, QFont::Bold));
    m_pStereoMix->setObjectName("m_pStereoMix");
    SetTextColor(m_pStereoMix, Qt::red);
    m_pStereoMix->hide();

    get_audiodevice_name();
    m_pAudioComBox->addItem(QIcon(), QCoreApplication::translate("QWidget", "None"), kAudioNone);
    m_pAudioComBox->setCurrentIndex(0);
}

void DRUI::AddSaveDirectory(QWidget* panel)
{
    m_pSaveDirEdit = new QLineEdit(panel);
    m_pSaveDirEdit->setObjectName("m_pSaveDirEdit");
    m_pSaveDirEdit->setMinimumSize(300, 20);
    m_pSaveDirEdit->setGeometry(180, 120, 200, 25);
    m_pSaveDirEdit->setFont(CalibriFont(12, QFont::Bold));
    m_pSaveDirEdit->setText(ReadSavePath(m_strIniPath));
    m_pSaveDirEdit->setEnabled(false);
    QPalette palette = m_pSaveDirEdit->palette();
    palette.setColor(QPalette::Disabled, QPalette::Text, Qt::black); // otherwise it is grey on grey
    m_pSaveDirEdit->setPalette(palette);
    m_pSaveDirEdit->setCursorPosition(1);
    m_pSaveDirEdit->setAccessibleName("Save directory");
    m_pSaveDirEdit->setStyleSheet(field_style);

    QPushButton* folder = CreateFolderButton(panel, {500, 120, 30, 25});
    connect(folder, SIGNAL(clicked()), this, SLOT(btnSlotLayout2Dir()));
}

QWidget* DRUI::CreateRecordBar()
{
    auto* bar = new QLabel(m_pLayout2Widget);
    bar->setMinimumSize(width(), 40);
    QPushButton* back = CreateBarButton(bar, {50, 2, 100, 35}, kBack);
    connect(back, SIGNAL(clicked()), this, SLOT(btnSlotBack()));
    m_pRecordBtn = CreateBarButton(bar, {width() - 151, 2, 100, 35}, "Record");
    m_pRecordBtn->setObjectName("m_pRecordBtn");
    connect(m_pRecordBtn, SIGNAL(clicked()), this, SLOT(btnSlotRecord()));
    return bar;
}

void DRUI::ComBoxIndexChange(int index)
{
    m_nSelectedDeviceID = m_pAudioComBox->itemData(index).toUInt();
}

void DRUI::btnSlotLayout2Dir()
{
    const QString directory = ChooseDirectory(this);
    if (directory.isNull()) {
        return;
    }
    m_pSaveDirEdit->setText(directory);
    if (!directory.isEmpty()) {
        WriteSavePath(m_strIniPath, directory);
        m_pFreeSpaceLabel->ShowSpaceOf(m_pSaveDirEdit->text());
    }
}
