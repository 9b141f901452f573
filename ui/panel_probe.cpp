#include "ui/panel_probe.h"

#include <utility>

void PanelProbe::WhenItAnswers(const std::function<void()>& act)
{
    if (m_waiting.empty() && Answers()) {
        act();
        return;
    }
    m_waiting.push_back(act);
    if (m_waiting.size() == 1) {
        connect(this, SIGNAL(answered()), SLOT(DoWhatWaits()));
        Ask();
    }
}

void PanelProbe::DoWhatWaits()
{
    disconnect(this, SIGNAL(answered()), this, SLOT(DoWhatWaits()));
    for (const auto& act : std::exchange(m_waiting, {})) {
        act();
    }
}
