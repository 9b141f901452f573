#include "jobs/job_report.h"
#include "jobs/merge_command.h"
#include "jobs/record_command.h"
#include "jobs/tool_runner.h"
#include "ui/directory_chooser.h"
#include "ui/drui.h"
#include "ui/input_block.h"
#include "ui/scanui.h"
#include "ui/video_table.h"
#include "util/ownership.h"

#include <QDebug>
#include <QFile>
#include <QLineEdit>

// The merge job: converts every file of the list to a transport stream, then joins the streams.
// Runs behind the progress dialog. The window lives but takes no input.

void DRUI::btnSlotLayout4Merge()
{
    if (IsBusy()) {
        return;
    }
    m_strMergeSaveDir = ChooseDirectory(this, m_strMergeSaveDir);
    m_vecMergeFiles.clear();
    if (m_strMergeSaveDir.isNull()) {
        return;
    }
    for (int row = 0; row < m_pTargetVideoTable->rowCount(); ++row) {
        m_vecMergeFiles.append(m_pTargetVideoTable->item(row, 0)->text());
    }
    const InputBlock block(*this, InputBlock::Input::Dropped);
    m_bisFinished = false;
    SCANUI progress;
    progress.InitSlot(this);
    progress.ShowOver(*this);
    StartQProcessMerge();
}

// The last report carries the result of the conversions only. This is intended: a merge that fails
// or is cancelled in its second stage ends like a successful one. Its file is already deleted.
int DRUI::StartQProcessMerge()
{
    m_nMergeRet = kJobGood;
    const QString output =
        FreePath(MergeDestination(m_strMergeSaveDir, QDateTime::currentDateTime()));
    if (output.isEmpty()) { // an empty argument would be dropped from the command line
        m_nMergeRet = kJobInvalid;
        Inform(NoFreeNameText(kMergeOperation));
        return m_nMergeRet;
    }
    m_nMergeProcessPos = 0;
    m_nMergeProcessTotal = MergeTicks(m_vecMergeFiles.size());

    QStringList streams;
    const int result = ConvertAll(output, streams);
    if (result == kJobGood) {
        JoinStreams(streams, output);
    }
    for (const QString& stream : streams) {
        QFile::remove(stream);
    }
    GiveToFolderOwner(QFile::encodeName(output).constData());
    if (m_nMergeRet != kJobGood) {
        QFile::remove(output);
    }
    if (m_bIsEnding) {
        return result; // nothing is told any more
    }
    if (result == kJobInvalid) { // ChangeToTS found no free name for a stream
        Inform(NoFreeNameText(kMergeOperation));
    } else {
        Q_EMIT AddProcessCallBack(100, output, output, result);
    }
    return result;
}

// Looks for the files in the folder the page shows now, wherever they were added from.
int DRUI::ConvertAll(const QString& output, QStringList& streams)
{
    for (const QString& name : m_vecMergeFiles) {
        const QString stream =
            IntermediatePath(m_strMergeSaveDir, static_cast<int>(streams.size()) + 1);
        QFile::remove(stream);
        streams.append(stream);
        std::wstring to = stream.toStdWString();
        std::wstring from = (m_pLayout4DirEdit->text() + '/' + name).toStdWString();
        std::wstring target = output.toStdWString();
        const int result = ChangeToTS(to.data(), from.data(), target.data());
        if (result != kJobGood) {
            return result;
        }
    }
    return kJobGood;
}

void DRUI::JoinStreams(const QStringList& streams, const QString& output)
{
    m_strTargetName = output;
    if (!Run(*m_pMergeProcess, ConcatCommand(ToolPrefix(), streams, output))) {
        m_nMergeRet = kJobCancelled;
    }
}

int DRUI::ChangeToTS(wchar_t* tsPath, wchar_t* inputPath, wchar_t* targetPath)
{
    m_nChangeTSRet = kJobGood;
    m_strCurMergeName = QString::fromWCharArray(inputPath);
    m_strTargetName = QString::fromWCharArray(targetPath);
    // Exists only if it could not be removed. The join still asks for the first name.
    const QString stream = FreePath(QString::fromWCharArray(tsPath));
    qDebug() << stream;
    if (stream.isEmpty()) {
        m_nMergeRet = kJobInvalid;
        m_nChangeTSRet = kJobInvalid;
        return m_nChangeTSRet;
    }
    if (!Run(*m_pChangeTSProcess, ChangeToTSCommand(ToolPrefix(), m_strCurMergeName, stream))) {
        m_nMergeRet = kJobCancelled;
        m_nChangeTSRet = kJobCancelled;
    }
    return m_nChangeTSRet;
}

// A bad input marks the merge as failed but does not stop it; only a cancel does.
void DRUI::ReadChange2TSInfo()
{
    const OutputMarks marks = MarksIn(ReadToolText(*m_pChangeTSProcess));
    if (marks.invalid) {
        m_nMergeRet = kJobInvalid;
    }
    if (marks.tick) {
        CountMergeTick(m_strCurMergeName);
    }
    if (m_bisFinished) {
        m_nChangeTSRet = kJobCancelled;
        AskToolToQuit(*m_pChangeTSProcess);
    }
}

void DRUI::ReadMergeInfo()
{
    const OutputMarks marks = MarksIn(ReadToolText(*m_pMergeProcess));
    if (marks.invalid || marks.missing) {
        m_nMergeRet = kJobInvalid;
    }
    if (marks.tick) {
        CountMergeTick(m_strTargetName);
    }
    if (m_bisFinished) {
        m_nMergeRet = kJobCancelled;
        AskToolToQuit(*m_pMergeProcess);
    }
}

void DRUI::CountMergeTick(const QString& current)
{
    m_nMergeProcessPos = qMin(m_nMergeProcessPos + 1, m_nMergeProcessTotal);
    Q_EMIT AddProcessCallBack(MergePercent(m_nMergeProcessPos, m_nMergeProcessTotal), current,
                              m_strTargetName, kJobGood);
}

// The entry point for the job thread; does not merge.
void DRUI::_AddProcess(void* param, int& result)
{
    m_bisFinished = false;
    auto* window = static_cast<DRUI*>(param);
    std::wstring directory = window->m_strMergeSaveDir.toStdWString();
    window->MakeAddVedio(directory.data(), result);
}

int DRUI::MakeAddVedio(wchar_t* /*path*/, int& /*result*/)
{
    return 0;
}
