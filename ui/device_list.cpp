#include "jobs/device_listing.h"
#include "jobs/tool_runner.h"
#include "ui/drui.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QIcon>

namespace {
// A listing has some kilobytes; what a tool run wild prints beyond this is dropped.
constexpr qsizetype kMostDeviceText = 1 << 24;
} // namespace

void DRUI::get_audiodevice_name()
{
    m_strDevInfo.clear();
    RunTool(*m_pDevProcess, DeviceListCommand(ToolPrefix()));

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
