#pragma once

#include "simulated-board/devices/PortRole.h"

#include <string>

/// The companion controller: it has the buzzer and the battery-backed clock. What it was last told
/// stands in /run/board/received/controller, a line each:
///
///   buzzer on|off
///   time YYYY-MM-DD hh:mm:ss, or "time none" before it is set
///   accepted COUNT of the frames it has understood
///   refused COUNT of the stretches of bytes it has not
class Controller : public PortRole
{
public:
    void Run(int master) override;

private:
    /// Takes one frame, or bytes that are none, from the front. False when more has to come first.
    bool TakeFrame();
    bool Accept(const std::string& frame);
    bool SwitchBuzzer(const std::string& data);
    bool SetTime(const std::string& data);
    void Refuse(std::size_t count);
    void WriteState() const;

    std::string m_pending;
    bool m_buzzer = false;
    std::string m_time = "none";
    int m_accepted = 0;
    int m_refused = 0;
};
