#include "jobs/device_listing.h"
#include "jobs/tool_runner.h"
#include "ui/drui.h"
#include "ui/styles.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QFontMetrics>
#include <QIcon>

#include <utility>

namespace {
// A listing has a few kilobytes. Output of a broken tool beyond this is dropped.
constexpr qsizetype kMostDeviceText = 1 << 24;

// Loads the fonts of the pages. Measuring text waits until its font is loaded.
void LoadFonts()
{
    const auto [normal, bold] = std::pair{QFont::Normal, QFont::Bold};
    for (const auto& [points, weight] :
         {std::pair{13, normal}, {10, normal}, {11, normal}, {11, bold}, {12, bold}}) {
        QFontMetrics(CalibriFont(points, weight)).horizontalAdvance("Lumenfold");
    }
}

} // namespace

void DRUI::get_audiodevice_name()
{
    m_strDevInfo.clear();
    StartTool(*m_pDevProcess, DeviceListCommand(ToolPrefix()));
    LoadFonts(); // the tool takes as long, on another processor
    m_pDevProcess->waitForFinished(kToolWaitMs);

    const DeviceListing listing = ParseDeviceListing(m_strDevInfo);
    if (listing.screen != 0) {
        m_cScreenIndex = listing.screen;
    }
    m_nMicIndex = listing.microphone;
    m_nSoundIndex = listing.sound;
    for (const AudioChoice& choice : listing.choices) {
        m_pAudioComBox->addItem(QIcon(), QCoreApplication::translate("QWidget", choice.text),
                                choice.data);
    }
}

void DRUI::ReadDeviceInfo()
{
    const QString chunk = ReadToolText(*m_pDevProcess);
    if (m_strDevInfo.size() < kMostDeviceText) {
        m_strDevInfo += chunk;
    }
}
