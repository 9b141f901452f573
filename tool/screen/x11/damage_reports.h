// Tells whether the X screen may have changed, from the server's reports of damage.
#pragma once

#include <xcb/damage.h>
#include <xcb/xcb.h>

namespace tool {

class DamageReports
{
public:
    // Without the extension the screen may always have changed.
    DamageReports(xcb_connection_t* connection, xcb_window_t root);

    // Asks for a report of the first change after this. Call it immediately before the image is
    // asked for, so that no change falls in between.
    void Renew();
    // Takes note of any event of the connection.
    void Follow(const xcb_generic_event_t& event);
    bool MayHaveChanged() const { return m_damage == 0 || m_bReported; }

    // To be called when a look at the screen has shown that nothing has changed.
    void NoteStill() { m_nInARow = 0; }
    // Stops for good, because something has changed without a report.
    void GiveUp();

private:
    void Stop();

    xcb_connection_t* m_pConnection;
    xcb_window_t m_root;
    bool m_bAvailable = false;
    uint8_t m_nEvent = 0;             // the type of the reports
    xcb_damage_damage_t m_damage = 0; // 0: no reports
    bool m_bReported = false;
    int m_nInARow = 0; // pictures that had changed
    int m_nRest = 0;   // pictures until reports are worth another try
};

} // namespace tool
