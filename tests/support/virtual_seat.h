// A pointer and a keyboard for sway, which has neither without hardware, and whose clients get no
// input then.
#pragma once

#include <QPoint>
#include <QSize>

#include <cstdint>
#include <memory>

class VirtualSeat
{
public:
    // Connects to WAYLAND_DISPLAY. Check Good() after.
    VirtualSeat();
    VirtualSeat(const VirtualSeat&) = delete;
    VirtualSeat& operator=(const VirtualSeat&) = delete;
    ~VirtualSeat();

    bool Good() const;

    // Logical coordinates in the layout of all monitors, which has this size.
    void Move(QPoint place, QSize layout);
    // Buttons and keys are numbered as by the kernel (linux/input-event-codes.h).
    void HoldButton(uint32_t button, bool down);
    void HoldKey(uint32_t key, bool down);

private:
    struct Connection;
    std::unique_ptr<Connection> m_pConnection;
};
