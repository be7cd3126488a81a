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

/// Creates the role with the name:
///
///   loopback     a plug that returns every byte
///   echo         a partner that answers each line with "echo: " and the line
///   nothing      no device: bytes to it are lost
///   flood        a partner that sends as fast as it is read, without line ends
///   vanishing    an adapter that returns the first bytes and is then unplugged
///   log [good|bad|no-uboot|stuck]
///                boards that are being flashed, the first one when the port has been opened and
///                cleared: the whole log of each at the speed of the line; "bad" fails the
///                self-test, "stuck" stops in the middle
///   modem        the AT port of the 4G modem; records its input in /run/board/received/modem
///   controller   the companion controller with the buzzer and the clock
///
/// Throws std::invalid_argument for another name.
std::unique_ptr<PortRole> MakePortRole(const std::string& name,
                                       const std::vector<std::string>& arguments);

/// Waits for bytes from the board and returns them.
std::string ReadSome(int descriptor);
