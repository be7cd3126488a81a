#pragma once

#include <memory>
#include <string>
#include <vector>

/// What is plugged into a serial port of the simulated board.
class PortRole
{
public:
    virtual ~PortRole() = default;

    /// Talks over the port's far end; returns when the partner has nothing more to say, which
    /// unplugs it.
    virtual void Run(int master) = 0;
};

/// The role of a name:
///   loopback     a plug that gives back every byte
///   echo         a partner that answers each line with "echo: " and the line
///   modem        the AT port of the 4G modem; keeps what it was sent in /run/board/received/modem
/// Throws std::invalid_argument for another name.
std::unique_ptr<PortRole> MakePortRole(const std::string& name,
                                       const std::vector<std::string>& arguments);
