// Gives a program the CAN bus "can0" where the kernel has none. Loaded ahead of the C library
// (LD_PRELOAD), it replaces the calls by which a program opens the bus. A partner on the bus sends
// three frames when it is opened.

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <iterator>

#include <dlfcn.h>
#include <linux/can.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

const int interfaceIndex = 7;

template <typename Function>
Function* Real(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void SendFrames(int partner)
{
    for (unsigned char i = 1; i <= 3; ++i) {
        const unsigned char bytes[] = {0x10, 0x20, 0x30, 0x40, 0x50, 0x60, 0x70, i};
        can_frame frame = {};
        frame.can_id = 0x123;
        frame.can_dlc = sizeof bytes;
        std::copy(std::begin(bytes), std::end(bytes), frame.data);
        if (write(partner, &frame, sizeof frame) != sizeof frame) {
            return;
        }
    }
}

} // namespace

extern "C" int socket(int domain, int type, int protocol) noexcept
{
    static auto* real = Real<int(int, int, int)>("socket");
    if (domain != AF_CAN) {
        return real(domain, type, protocol);
    }
    // The partner's end stays open, so that the board can send.
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0, ends) != 0) {
        return -1;
    }
    SendFrames(ends[1]);
    return ends[0];
}

extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    static auto* real = Real<int(int, unsigned long, ...)>("ioctl");
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    auto* interface = static_cast<ifreq*>(argument);
    if (request != SIOCGIFINDEX || std::strcmp(interface->ifr_name, "can0") != 0) {
        return real(descriptor, request, argument);
    }
    interface->ifr_ifindex = interfaceIndex;
    return 0;
}

extern "C" int bind(int descriptor, const sockaddr* address, socklen_t size) noexcept
{
    static auto* real = Real<int(int, const sockaddr*, socklen_t)>("bind");
    return address->sa_family == AF_CAN ? 0 : real(descriptor, address, size);
}
