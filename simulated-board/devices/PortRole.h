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
///   flood        a partner that talks as fast as it is read, without a line end
///   vanishing    an adapter that gives back the first bytes and is then pulled out
///   log [good|bad|no-uboot|stuck]
///                boards being flashed, the first one when the port has been opened and cleared:
///                the whole log of each at the speed of the line; "bad" fails the self-test,
///                "stuck" stops without a word
///   modem        the AT port of the 4G modem; keeps what it was sent in /run/board/received/modem
///   controller   the companion controller with the buzzer and the clock
/// Throws std::invalid_argument for another name.
std::unique_ptr<PortRole> MakePortRole(const std::string& name,
                                       const std::vector<std::string>& arguments);

/// Waits for bytes from the board.
std::string ReadSome(int descriptor);
