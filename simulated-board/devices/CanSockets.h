#pragma once

#include <string>

// The CAN bus "can0" for a program where the kernel has none. The calls by which the program opens
// the bus are answered with one end of a socket pair, which carries frames as a CAN socket does.

/// Called with the other end, each time the program opens the bus. Who is linked with this says
/// what the partner does then, and closes it.
void OnCanOpened(int partner);

/// The program's last calls on a CAN socket.
struct CanSocketCalls {
    int type = 0;
    int protocol = 0;
    std::string interface;
    int boundFamily = 0;
    int boundIndex = 0;
    int opened = 0;
};
extern CanSocketCalls canSocketCalls;

/// Makes the next CAN sockets fail: like those of a kernel without CAN, or like those of a kernel
/// that has no interface of that name.
enum class CanFault { None, NoCan, NoInterface };
extern CanFault canFault;
