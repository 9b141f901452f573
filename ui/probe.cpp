#include "jobs/duration.h"
#include "jobs/tool_runner.h"
#include "ui/drui.h"

std::string DRUI::GetVedioTimeSeconds(wchar_t* path)
{
    m_strDevInfo.clear();
    RunTool(*m_pDevProcess, ProbeCommand(ToolPrefix(), QString::fromWCharArray(path)));
    return FindDuration(m_strDevInfo);
}
