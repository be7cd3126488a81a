#pragma once

#include <string>

/// A pseudo-terminal in raw mode. Its slave end is kept open, so that the master end does not
/// report a hang-up between two users of the port.
class PseudoTerminalPair
{
public:
    /// Throws std::system_error when the system has none to give.
    PseudoTerminalPair();
    ~PseudoTerminalPair();
    PseudoTerminalPair(const PseudoTerminalPair&) = delete;
    PseudoTerminalPair& operator=(const PseudoTerminalPair&) = delete;

    /// Shows the slave end under a device's name, in place of what was there.
    void LinkAs(const std::string& device) const;

    int Master() const { return m_master; }

    /// Closes both ends: whoever has the port open sees it vanish.
    void Close();

private:
    int m_master = -1;
    int m_slave = -1;
    std::string m_slaveName;
};
