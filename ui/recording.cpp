#include "jobs/device_listing.h"
#include "jobs/job_report.h"
#include "jobs/record_command.h"
#include "jobs/record_file.h"
#include "jobs/recording_status.h"
#include "jobs/recording_watch.h"
#include "jobs/tool_runner.h"
#include "ui/drui.h"
#include "ui/failure_notice.h"
#include "ui/tray_stand_in.h"
#include "util/ownership.h"
#include "util/tick.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

bool DRUI::m_bIsStart = false;
bool DRUI::m_bIsPause = false;
int DRUI::m_nRecorderRet = 0;
qint64 DRUI::m_n64AudioFrames = 0;

namespace {

constexpr int kRecTimerMs = 200;

quint32 TickNow()
{
    return static_cast<quint32>(rsb_getTickCount());
}

} // namespace

void DRUI::btnSlotRecord()
{
    if (!m_bIsStart) {
        m_bIsStart = true;
        EnterRecording();
        m_panel.WhenItAnswers([this] {
            if (m_pTrayIcon != nullptr) {
                m_pTrayIcon->setVisible(true);
            }
        });
        hide();
        m_pStereoMix->show();
        StartQProcessRecord();
        m_pRecTimer->start(kRecTimerMs);
        return;
    }

    m_bIsStart = false;
    EnterIdle();
    if (m_nRecorderRet != 0) {
        QMessageBox::information(this, "Recorder", RecordingFailure(m_nRecorderRet),
                                 QMessageBox::Ok);
        m_nRecorderRet = 0;
    }
}

// The tray's Stop shows no message for m_nRecorderRet, unlike the button. This is intended.
void DRUI::btnSlotMenuStop()
{
    m_bIsStart = !m_bIsStart;
    if (m_bIsStart) {
        EnterRecording();
        m_pStereoMix->show();
        StartQProcessRecord();
        m_pRecTimer->start(kRecTimerMs);
        hide();
        return;
    }
    EnterIdle();
}

// Updates the display for both ways of starting. Pause is always disabled; this is intended.
void DRUI::EnterRecording()
{
    m_pFailureNotice->Close(); // it is about the recording before
    m_pRecTimer->stop();
    m_n64AudioFrames = 0;
    m_pRecordBtn->setText("Stop");
    SetTrayEntry(1, "Stop", ":/image/stop.png");
    m_pTrayStandIn->ShowElapsed(0);
    m_pTrayStandIn->FollowTray();
}

// Updates the display for both ways of stopping. The tool ends later: it is asked to quit at its
// next output.
void DRUI::EnterIdle()
{
    m_pRecordingWatch->Stop();
    m_pStereoMix->hide();
    m_pRecTimer->stop();
    m_n64AudioFrames = 0;
    m_bIsPause = false;
    m_pRecordBtn->setText("Start"); // "Record" before the first recording only. Intended.
    if (QAction* pause = TrayEntry(0)) {
        pause->setEnabled(false);
    }
    SetTrayEntry(0, "Pause", ":/image/pause.png");
    SetTrayEntry(1, "Start", ":/image/play.png");
    SetTrayIcon(":/image/rec1.png");
    m_pTrayStandIn->hide();
    show();
}

int DRUI::StartQProcessRecord()
{
    m_nRecStartTick = TickNow();
    const int audio = m_pAudioComBox->currentData().toInt(); // "None" is -2
    const std::optional<QString> path =
        NewRecordPath(m_pSaveDirEdit->text(), QDateTime::currentDateTime());
    m_strRecFile = path.value_or(QString());

    // A tool that is still running refuses the start. If it is finishing its file, this recording
    // never starts. If it goes on (after a pause), it is this recording.
    const bool running = m_pRecProcess->state() != QProcess::NotRunning;
    m_bQuitSent = m_bQuitSent && running;
    const bool goesOn = running && !m_bQuitSent;
    if (goesOn) {
        m_pRecordingWatch->GoOn();
    }
    if (m_strRecFile.isEmpty()) { // an empty argument would be dropped from the command line
        if (!goesOn) {
            m_pRecordingWatch->ReportNoStart(path ? kNoFreeName : kDirectoryDoesNotAnswer);
        }
        return 0;
    }
    if (!running) {
        m_pRecordingWatch->Begin(m_strRecFile);
    }
    const RecordDevices devices{m_cScreenIndex, m_nMicIndex, m_nSoundIndex};
    const bool started =
        StartTool(*m_pRecProcess, RecordCommand(ToolPrefix(), devices, audio, m_strRecFile));
    const QString failure = StartFailure(started, m_pRecProcess->errorString(), m_bQuitSent);
    if (!failure.isEmpty()) {
        m_pRecordingWatch->ReportNoStart(failure);
    }
    return 0;
}

void DRUI::doTimerRec()
{
    const QString image = BlinkImage(m_nBlinkCount);
    if (!image.isEmpty()) {
        SetTrayIcon(image);
    }
    const quint32 elapsed = ElapsedMs(m_nRecStartTick, TickNow());
    m_pTrayStandIn->ShowElapsed(elapsed);
    m_pTrayStandIn->FollowTray();
    m_pStereoMix->setText(
        RecordingStatus(elapsed, m_questions.fileBytes.Ask(m_strRecFile).value_or(0)));
    // Its geometry is for 72 dpi. With larger fonts it grows downwards.
    m_pStereoMix->resize(m_pStereoMix->width(),
                         qMax(m_pStereoMix->height(), m_pStereoMix->sizeHint().height()));
    const std::optional<quint64> free = m_questions.freeBytes.Ask(m_pSaveDirEdit->text());
    if (free && IsTooLittleSpace(*free)) {
        m_nRecorderRet = kStoppedForSpace;
        btnSlotRecord();
    }
}

// Sends the quit command at the tool's next output after the stop, and again at every further one.
// Stopping relies on the tool printing its progress.
void DRUI::ReadRecordInfo()
{
    m_pRecordingWatch->AddOutput(ReadToolText(*m_pRecProcess));
    if (MustGiveFiles()) { // it exists by now
        m_questions.given.Ask(m_strRecFile);
    }
    if (!m_bIsStart) {
        AskToolToQuit(*m_pRecProcess);
        m_bQuitSent = true;
    }
}

// Pauses the display only: the tool goes on recording to the same file. Resuming requests a second
// start, which the process refuses, so the size shown is that of a file that is never created. This
// is intended.
void DRUI::btnSlotMenuPause()
{
    if (!m_bIsPause) {
        m_pRecTimer->stop();
        m_pStereoMix->hide();
        SetTrayEntry(0, "Start", ":/image/play.png");
        SetTrayIcon(":/image/rec1.png");
    } else {
        SetTrayEntry(0, "Pause", ":/image/pause.png");
        m_pStereoMix->show();
        StartQProcessRecord();
        m_pRecTimer->start(kRecTimerMs);
    }
    m_bIsPause = !m_bIsPause;
}

void DRUI::_RecordProcess(void* /*param*/, int& /*result*/) {}
