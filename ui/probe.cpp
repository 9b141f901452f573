#include "jobs/duration.h"
#include "jobs/tool_runner.h"
#include "ui/drui.h"

std::string DRUI::GetVedioTimeSeconds(wchar_t* path)
{
    m_strDevInfo.clear();
    Run(*m_pDevProcess, ProbeCommand(ToolPrefix(), QString::fromWCharArray(path)));
    return FindDuration(m_strDevInfo);
}

// Remembers that the program is ending, so that no further run is started.
bool DRUI::Run(QProcess& process, const QString& command)
{
    m_bIsEnding = !RunTool(process, command) || m_bIsEnding;
    return !m_bIsEnding;
}
