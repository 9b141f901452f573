#pragma once

#include "jobs/job_thread.h"
#include "ui_drui.h"

#include <QMainWindow>
#include <QProcess>
#include <QSystemTrayIcon>

#include <memory>
#include <string>

class QAction;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSlider;
class QStackedLayout;
class QTableWidgetItem;
class QTimer;
class QTreeWidgetItem;
class QVBoxLayout;
class TrayStandIn;
struct TitleStripShape;

// Spelled as they stand in a slot's signature.
using WCHAR = wchar_t;
using HRESULT = int;

// The main window: four pages in a stack, the six processes that run the tool, and the recording.
// Its code stands in one file a topic: drui (frame and navigation), home_page, record_page,
// device_list, probe, recording, tray, cut_page, merge_page.
class DRUI : public QMainWindow
{
    Q_OBJECT

public:
    explicit DRUI(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    ~DRUI() override;
    Q_DISABLE_COPY_MOVE(DRUI)

    /// Second step of the construction: processes, pages, timer. Lists the capture devices, which
    /// blocks for as long as the tool takes (60 s at most).
    void Init();

    // --- recording: one at a time in the whole program ---
    static bool m_bIsStart;         // a recording runs
    static bool m_bIsPause;         // its status display is paused
    static int m_nRecorderRet;      // 0, -101 stopped for lack of space, else no file could be made
    static qint64 m_n64AudioFrames; // 0 at every start and stop; nothing else reads it
    static QLabel* m_pStereoMix;    // status text on the record page
    static QComboBox* m_pAudioComBox;
    static unsigned int m_nSelectedDeviceID; // the audio choice's data; nothing reads it

    // --- cut and merge ---
    static bool m_bisFinished; // the user asked to cancel the job

    /// The duration of the video at `path` as hh:mm:ss, or nothing. Text, in spite of its name.
    std::string GetVedioTimeSeconds(wchar_t* path);

    // --- job entries that do nothing; a recording runs in the slots below ---
    int StartRecord() { return 0; }
    static void _RecordProcess(void* param, int& result);

protected:
    Q_SIGNAL void AddProcessCallBack(int percent, QString current, QString destination, int error);
    Q_SIGNAL void CutProcessCallBack(int percent, QString current, QString destination, int error);

    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private Q_SLOTS:
    // Their order is part of the contract of the meta-object: new slots go behind the last.
    void btnMinSlot();
    void btnMaxSlot();
    void btnCloseSlot();
    void btnSlot();
    void btnEditSlot();
    void btnMontageSlot();
    void btnAddSlot();
    void btnSlotBack();
    void btnSlotRecord();
    void btnSlotLayout4Dir();
    void btnSlotLayout4Merge();
    void btnSlotLayout3Dir();
    void btnSlotLayout3Cut();
    void btnSlotLayout2Dir();
    void btnUpSlot();
    void btnDownSlot();
    void btnDelSlot();
    void mplayerDataRecieve();
    void current(int pos);
    void btnOpenUrl(QString url);
    void btnHelpSlot();
    void btnSupportSlot();
    void btnAboutSlot();
    void btnLayout3Play();
    void btnSetHead();
    void btnSetTail();
    HRESULT CutVedio(WCHAR* pSaveDir, int& nProcess);
    void btnSlotMenuStop();
    void btnSlotMenuPause();
    void btnSlotMenuQuit();
    void itemClick(QTreeWidgetItem* item, int column);
    void itemDiskClick(QTreeWidgetItem* item, int column);
    void TargetTableItemClick(QTableWidgetItem* pItem);
    void SourceTableItemClick(QTableWidgetItem* pItem);
    void SourceTableItemDoubleClick(QTableWidgetItem* pItem);
    void CutTableItemClick(QTableWidgetItem* pItem);
    void CutTableItemDoubleClick(QTableWidgetItem* pItem);
    void trayiconActivated(QSystemTrayIcon::ActivationReason reason);
    void ComBoxIndexChange(int index);
    void doTimerRec();
    void ReadRecordInfo();
    void ReadMergeInfo();
    void ReadChange2TSInfo();
    void ReadCutInfo();
    void ReadDeviceInfo();

private:
    // --- frame and navigation: drui.cpp ---
    QProcess* CreateToolProcess(const char* name, const char* slot);
    void BuildPages();
    void FixSize(const QSize& size);
    QPushButton* CreateButton(int kind, int x, QWidget* parent);
    void CreateFrameTitle(const QString& title);
    QVBoxLayout* CreateHeader(QWidget* page, const TitleStripShape& shape);
    QLineEdit* CreateFolderPage(QWidget* page, int versionWidth);

    Ui_DRUIClass ui;
    CMyThread m_thread;
    QStackedLayout* m_pStack = nullptr;
    bool m_bIsMaximized = false;

    // --- the tool's processes ---
    QProcess* m_pPlayerProcess = nullptr;
    QProcess* m_pDevProcess = nullptr;
    QProcess* m_pRecProcess = nullptr;
    QProcess* m_pChangeTSProcess = nullptr;
    QProcess* m_pMergeProcess = nullptr;
    QProcess* m_pCutProcess = nullptr;

    // --- home page: home_page.cpp ---
    void InitLayout1Widget();
    QPushButton* CreateHomeEntry(const QString& text, const QString& picture, const char* slot);
    QWidget* m_pLayout1Widget = nullptr;

    // --- record page: record_page.cpp ---
    void InitLayout2Widget();
    QWidget* CreateRecordPanel();
    void AddAudioChoices(QWidget* panel);
    void AddSaveDirectory(QWidget* panel);
    QWidget* CreateRecordBar();
    void ShowFreeSpace();
    QWidget* m_pLayout2Widget = nullptr;
    QLineEdit* m_pSaveDirEdit = nullptr;
    QLabel* m_pFreeSpaceLabel = nullptr;
    QPushButton* m_pRecordBtn = nullptr;
    QString m_strIniPath;

    // --- capture devices and the duration probe: device_list.cpp, probe.cpp ---
    void get_audiodevice_name();
    QString m_strDevInfo; // all that the last listing or probe printed
    char m_cScreenIndex = '0';
    int m_nMicIndex = -1;
    int m_nSoundIndex = -1;

    // --- recording session: recording.cpp ---
    int StartQProcessRecord();
    void EnterRecording();
    void EnterIdle();
    void ReportStartError();
    QTimer* m_pRecTimer = nullptr;
    quint32 m_nRecStartTick = 0; // milliseconds, cut to 32 bits
    int m_nBlinkCount = 0;
    [[maybe_unused]] qint64 m_n64RecSpare = 0; // set with the blink counter, read by nothing
    QString m_strRecFile;
    QString m_strStartError;  // why the recording that is shown never started
    bool m_bQuitSent = false; // the running tool has been asked to finish

    // --- system tray: tray.cpp ---
    void CreateSystemTray();
    QAction* TrayEntry(int position) const;
    void SetTrayEntry(int position, const QString& text, const QString& image);
    void SetTrayIcon(const QString& image);
    QSystemTrayIcon* m_pTrayIcon = nullptr;
    std::unique_ptr<TrayStandIn> m_pTrayStandIn;

    // --- cut page: cut_page.cpp ---
    void InitLayout3Widget();
    QWidget* m_pLayout3Widget = nullptr;
    QLineEdit* m_pLayout3DirEdit = nullptr;
    QSlider* m_pCutSlider = nullptr;
    QString m_strPreviewFile;

    // --- merge page: merge_page.cpp ---
    void InitLayout4Widget();
    QWidget* m_pLayout4Widget = nullptr;
    QLineEdit* m_pLayout4DirEdit = nullptr;
};
