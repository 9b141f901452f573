#include "tool/screen/x11/damage_reports.h"

#include "tool/screen/x11/display.h"
#include "tool/screen/x11/reply.h"

namespace tool {
namespace {

// While everything changes, reports save nothing, and they cost the server a lot if a thousand
// small things change at a time: it adds up their places. So after a tenth of a second there are
// none for a second.
constexpr int busy = 3;
constexpr int rest = 30;

} // namespace

DamageReports::DamageReports(xcb_connection_t* connection, xcb_window_t root)
    : m_pConnection(connection),
      m_root(root)
{
    if (HasExtension(connection, &xcb_damage_id)) {
        const Owned<xcb_damage_query_version_reply_t> version(xcb_damage_query_version_reply(
            connection, xcb_damage_query_version(connection, 1, 1), nullptr));
        m_bAvailable = version != nullptr;
        m_nEvent = static_cast<uint8_t>(
            xcb_get_extension_data(connection, &xcb_damage_id)->first_event + XCB_DAMAGE_NOTIFY);
    }
}

void DamageReports::Renew()
{
    if (!m_bAvailable || (m_nRest > 0 && --m_nRest > 0)) {
        return;
    }
    if (++m_nInARow > busy) {
        Stop();
        m_nRest = rest;
        return;
    }
    if (m_damage == 0) {
        m_damage = xcb_generate_id(m_pConnection);
        xcb_damage_create(m_pConnection, m_damage, m_root, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    }
    xcb_damage_subtract(m_pConnection, m_damage, XCB_NONE, XCB_NONE);
    m_bReported = false;
}

void DamageReports::Follow(const xcb_generic_event_t& event)
{
    if ((event.response_type & 0x7f) == m_nEvent && m_damage != 0) {
        const auto& report = reinterpret_cast<const xcb_damage_notify_event_t&>(event);
        m_bReported = m_bReported || report.damage == m_damage;
    }
}

void DamageReports::Stop()
{
    if (m_damage != 0) {
        xcb_damage_destroy(m_pConnection, m_damage);
        m_damage = 0;
    }
    m_nInARow = 0;
}

void DamageReports::GiveUp()
{
    Stop();
    m_bAvailable = false;
}

} // namespace tool
