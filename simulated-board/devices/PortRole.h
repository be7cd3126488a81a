#pragma once

#include <memory>
#include <string>
#include <vector>

/// A device that is plugged into a serial port of the simulated board.
class PortRole
{
public:
    virtual ~PortRole() = default;

    /// Runs the device at the port's far end. When it returns, the port is unplugged.
    virtual void Run(int master) = 0;
};

/// Creates the role with that name and those arguments, as a board's description has them. Throws
/// std::invalid_argument for others, and tells which there are.
std::unique_ptr<PortRole> MakePortRole(const std::string& name,
                                       const std::vector<std::string>& arguments);

/// Waits for bytes from the board and returns them.
std::string ReadSome(int descriptor);
