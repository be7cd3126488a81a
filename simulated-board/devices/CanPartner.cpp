// Gives a program the CAN bus "can0" where the kernel has none. Loaded ahead of the C library
// (LD_PRELOAD). A partner on the bus sends three frames when it is opened.

#include "simulated-board/devices/CanSockets.h"

#include <cstring>

#include <linux/can.h>
#include <unistd.h>

// The partner stays, so that the board can send.
void OnCanOpened(int partner)
{
    for (unsigned char i = 1; i <= 3; ++i) {
        const unsigned char bytes[] = {0x10, 0x20, 0x30, 0x40, 0x50, 0x60, 0x70, i};
        can_frame frame = {};
        frame.can_id = 0x123;
        frame.can_dlc = sizeof bytes;
        std::memcpy(frame.data, bytes, sizeof bytes);
        if (write(partner, &frame, sizeof frame) != sizeof frame) {
            return;
        }
    }
}
