// A serial port of the simulated board: a pseudo-terminal and the device that is plugged into it.
//
//   board-port DEVICE ROLE [ARGUMENT]...
//
// The port exists while this program runs. When it ends, the port vanishes like an unplugged
// adapter.

#include "simulated-board/devices/PortRole.h"
#include "simulated-board/devices/PseudoTerminalPair.h"

#include <csignal>
#include <cstdio>
#include <exception>

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::fprintf(stderr, "Usage: board-port DEVICE ROLE [ARGUMENT]...\n");
        return 2;
    }
    try {
        const auto role = MakePortRole(argv[2], {argv + 3, argv + argc});
        const PseudoTerminalPair terminal;
        terminal.LinkAs(argv[1]);
        role->Run(terminal.Master());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "board-port %s %s: %s\n", argv[1], argv[2], error.what());
        return 1;
    }
    return 0;
}
