#pragma once

#include "jobs/file_records.h"
#include "jobs/job_thread.h"
#include "jobs/record_file.h"
#include "ui/page_parts.h"
#include "ui/panel_probe.h"
#include "ui/video_table.h"
#include "ui_drui.h"

#include <QHash>
#include <QMainWindow>
#include <QProcess>
#include <QSystemTrayIcon>
#include <QVector>

#include <functional>
#include <memory>
#include <string>

class QAction;
class QComboBox;
class QEventLoop;
class FailureNotice;
class FocusRing;
class FreeSpaceLabel;
class InputBlock;
class QSlider;
class QStackedLayout;
class QTimer;
class QTreeWidgetItem;
class RecordingWatch;
class TrayStandIn;

// Spelled as in the signature of a slot.
using WCHAR = wchar_t;
using HRESULT = int;

// The main window: four pages in a stack, the six processes for the tool, and the recording. Each
// topic has a source file: drui (frame and navigation), home_page, record_page, device_list, probe,
// recording, tray, video_pages, scan, cut_page, cut, merge_page, merge, rebuild.
class DRUI : public QMainWindow
{
    Q_OBJECT

public:
    explicit DRUI(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    ~DRUI() override;
    Q_DISABLE_COPY_MOVE(DRUI)

    /// Second step of construction: processes, pages, timer. Lists the capture devices, which
    /// blocks until the tool is done (60 s at most).
    void Init();

    // --- recording: one at a time in the whole program ---
    static bool m_bIsStart;    // a recording is running
    static bool m_bIsPause;    // the status display is paused
    static int m_nRecorderRet; // 0, -101 stopped for lack of space, else no file could be created
    static qint64 m_n64AudioFrames; // set to 0 at every start and stop; otherwise unused
    static QLabel* m_pStereoMix;    // status text on the record page
    static QComboBox* m_pAudioComBox;
    static unsigned int m_nSelectedDeviceID; // data of the audio choice; not read

    // --- cut and merge ---
    static bool m_bisFinished; // the user asked to cancel the job

    /// The duration of the video at `path` as hh:mm:ss, or an empty string. Text, despite its name.
    std::string GetVedioTimeSeconds(wchar_t* path);

    // --- entries for the job thread, which is never started: jobs run in the slots below ---
    int StartRecord() { return 0; }
    int MakeAddVedio(wchar_t* path, int& result);
    static void _RecordProcess(void* param, int& result);
    static void _CutProcess(void* param, int& result);
    static void _AddProcess(void* param, int& result);

protected:
    Q_SIGNAL void AddProcessCallBack(int percent, QString current, QString destination, int error);
    Q_SIGNAL void CutProcessCallBack(int percent, QString current, QString destination, int error);

    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private Q_SLOTS:
    // Their order in the meta-object is part of the interface: append new slots at the end.
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
    void Inform(const QString& text);
    QPushButton* CreateButton(int kind, int x, QWidget* parent);
    void CreateFrameTitle(const QString& title);
    QVBoxLayout* CreateHeader(QWidget* page, const TitleStripShape& shape);

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
    QWidget* m_pLayout2Widget = nullptr;
    QLineEdit* m_pSaveDirEdit = nullptr;
    FreeSpaceLabel* m_pFreeSpaceLabel = nullptr;
    QPushButton* m_pRecordBtn = nullptr;
    QString m_strIniPath;

    // --- capture devices and the duration probe: device_list.cpp, probe.cpp ---
    void get_audiodevice_name();
    bool Run(QProcess& process, const QString& command);
    bool m_bIsEnding = false; // the program, as seen by a run of the tool
    QString m_strDevInfo;     // output of the last listing or probe
    char m_cScreenIndex = '0';
    int m_nMicIndex = -1;
    int m_nSoundIndex = -1;

    // --- recording session: recording.cpp ---
    int StartQProcessRecord();
    void EnterRecording();
    void EnterIdle();
    QTimer* m_pRecTimer = nullptr;
    quint32 m_nRecStartTick = 0; // milliseconds, truncated to 32 bits
    int m_nBlinkCount = 0;
    [[maybe_unused]] qint64 m_n64RecSpare = 0; // set with the blink counter, otherwise unused
    QString m_strRecFile;
    RecordingQuestions m_questions;
    bool m_bQuitSent = false; // the running tool has been asked to quit
    RecordingWatch* m_pRecordingWatch = nullptr;
    std::unique_ptr<FailureNotice> m_pFailureNotice;

    // --- system tray: tray.cpp ---
    void CreateSystemTray();
    void AddTrayIcon();
    QAction* TrayEntry(int position) const;
    void SetTrayEntry(int position, const QString& text, const QString& image);
    void SetTrayIcon(const QString& image);
    QSystemTrayIcon* m_pTrayIcon = nullptr;
    PanelProbe m_panel;
    FocusRing* m_pFocusRing = nullptr;
    QHash<QString, QIcon> m_trayIcons; // by image
    std::unique_ptr<TrayStandIn> m_pTrayStandIn;

    // --- the cut and the merge page: video_pages.cpp, scan.cpp, rebuild.cpp ---
    QHBoxLayout* CreateFolderRow(QWidget* page, const FolderRowShape& shape, const char* slot);
    enum class Entry { None, Cut, Merge }; // of the home page, that scan a folder
    bool IsBusy() const;
    void Enter(Entry entry);
    void LeaveScan();
    InputBlock BeginReading();
    bool ListFolder(const QString& folder);
    bool ProbeFiles(const QString& folder,
                    const std::function<void(const _FILE_INFO_&, const QString&)>& show);
    void WatchFolderFields(bool watch);
    void RebuildPages();
    Entry m_entering = Entry::None;                  // whose scan is running
    Entry m_nextEntry = Entry::None;                 // was clicked meanwhile
    bool m_bStopScan = false;                        // the user has left the page
    QEventLoop* m_pListLoop = nullptr;               // waits for a folder's list
    QVector<_FILE_INFO_> m_vecFileInfo;              // the last folder scan, newest first
    QVector<_MERGER_FILE_INFO_> m_vecMergerFileInfo; // the merge list while its page is rebuilt

    // --- cut page: cut_page.cpp ---
    void InitLayout3Widget();
    VideoTable* CreateCutVideoTable();
    QWidget* CreateCutPanel();
    QHBoxLayout* CreateCutBar();
    void AppendCutRow(const QString& name);
    bool FillCutTable(const QString& folder);
    void SetCutRange();
    void Layout3Play() {} // these two do nothing on purpose: there is no preview
    void FreeAviHandle() {}
    QWidget* m_pLayout3Widget = nullptr;
    QLineEdit* m_pLayout3DirEdit = nullptr;
    VideoTable* m_pCutVideoTable = nullptr;
    QLabel* m_pCutPosLabel = nullptr;
    QSlider* m_pCutSlider = nullptr;
    QPushButton* m_pBtnPlay = nullptr;
    QPushButton* m_pBtnHead = nullptr;
    QPushButton* m_pBtnTail = nullptr;
    QPushButton* m_pBtnCut = nullptr;
    QLabel* m_pHeadLabel = nullptr;
    QLabel* m_pTailLabel = nullptr;
    QString m_strPreviewFile;
    QString m_strCurPos;                    // seconds, last position of the slider; empty at first
    [[maybe_unused]] float m_fDuration = 0; // of the selected video; unused
    qint64 m_nCutDuration = 0;              // of the selected video, in seconds

    // --- cut job: cut.cpp ---
    int StartQProcessCut();
    QString m_strCutFile;     // the source
    QString m_strCutSaveDir;  // chosen last
    QString m_strCutDestFile; // of the last cut
    qint64 m_nCutStart = 0;   // seconds
    qint64 m_nCutEnd = 0;
    int m_nCutState = 0; // 0 no error seen, 1 invalid data, 2 cancelled
    int m_nCutStep = 0;  // progress chunks, 0 to 20

    // --- merge page: merge_page.cpp ---
    void InitLayout4Widget();
    QHBoxLayout* CreateMergeTables();
    VideoTable* CreateMergeTable(const char* name, int nameWidth);
    VideoTable* CreateSourceVideoTable();
    VideoTable* CreateTargetVideoTable();
    QWidget* CreateMergeBar();
    static QStringList SourceTexts(const _FILE_INFO_& file, const QString& duration);
    bool FillSourceTable(const QString& folder);
    void AppendSourceRow(const QStringList& texts);
    void AppendTargetRow(const QStringList& texts);
    void EnableMerge();
    QWidget* m_pLayout4Widget = nullptr;
    QLineEdit* m_pLayout4DirEdit = nullptr;
    VideoTable* m_pSourceVideoTable = nullptr;
    VideoTable* m_pTargetVideoTable = nullptr;
    QPushButton* m_pBtnAdd = nullptr;
    QPushButton* m_pBtnUp = nullptr;
    QPushButton* m_pBtnDown = nullptr;
    QPushButton* m_pBtnDel = nullptr;
    QPushButton* m_pBtnMerge = nullptr;

    // --- merge job: merge.cpp ---
    int StartQProcessMerge();
    int ConvertAll(const QString& output, QStringList& streams);
    void JoinStreams(const QStringList& streams, const QString& output);
    int ChangeToTS(wchar_t* tsPath, wchar_t* inputPath, wchar_t* targetPath);
    void CountMergeTick(const QString& current);
    QString m_strMergeSaveDir;        // last chosen; the streams are written there too
    QVector<QString> m_vecMergeFiles; // file names of the running merge
    QString m_strCurMergeName;        // being converted
    QString m_strTargetName;          // the result
    qint64 m_nMergeProcessPos = 0;    // ticks counted
    qint64 m_nMergeProcessTotal = 0;  // ticks expected
    int m_nChangeTSRet = 0;           // 0, 1 the stream had no name, 2 cancelled in this conversion
    int m_nMergeRet = 0;              // 0 good, 1 bad input, 2 cancelled in the join
};
