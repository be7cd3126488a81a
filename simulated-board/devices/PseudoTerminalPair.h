#pragma once

#include <string>

/// A pseudo-terminal in raw mode. Its slave end stays open, so that the master end reports no
/// hang-up between two users of the port.
class PseudoTerminalPair
{
public:
    /// Throws std::system_error when the system has no free pseudo-terminal.
    PseudoTerminalPair();
    ~PseudoTerminalPair();
    PseudoTerminalPair(const PseudoTerminalPair&) = delete;
    PseudoTerminalPair& operator=(const PseudoTerminalPair&) = delete;

    /// Links the slave end to a device's name. Replaces an earlier file of that name.
    void LinkAs(const std::string& device) const;

    int Master() const { return m_master; }

    /// Closes both ends. A program that has the port open sees a hang-up.
    void Close();

private:
    int m_master = -1;
    int m_slave = -1;
    std::string m_slaveName;
};
