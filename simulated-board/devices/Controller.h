#pragma once

#include "simulated-board/devices/PortRole.h"

#include <string>

/// The companion controller, which has the buzzer and the battery-backed clock. It writes its state
/// to /run/board/received/controller, one value a line:
///
///   buzzer on|off
///   time YYYY-MM-DD hh:mm:ss, or "time none" before it is set
///   accepted COUNT of the frames that it understood
///   refused COUNT of the runs of bytes that it did not understand
class Controller : public PortRole
{
public:
    void Run(int master) override;

private:
    /// Takes one frame, or bytes that are not a frame, from the front. False when it needs more
    /// bytes.
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
