#include "simulated-board/devices/CanSockets.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>

#include <dlfcn.h>
#include <linux/can.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

CanSocketCalls canSocketCalls;
CanFault canFault = CanFault::None;

namespace
{

const int interfaceIndex = 7;

template <typename Function>
Function* Real(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

int Refuse(int error)
{
    errno = error;
    return -1;
}

} // namespace

// Replaces functions of the C library. Calls about CAN are handled here; all others are passed on.

extern "C" int socket(int domain, int type, int protocol) noexcept
{
    static auto* real = Real<int(int, int, int)>("socket");
    if (domain != AF_CAN) {
        return real(domain, type, protocol);
    }
    if (canFault == CanFault::NoCan) {
        return Refuse(EAFNOSUPPORT);
    }
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0, ends) != 0) {
        return -1;
    }
    canSocketCalls.type = type;
    canSocketCalls.protocol = protocol;
    ++canSocketCalls.opened;
    OnCanOpened(ends[1]);
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
    if (request != SIOCGIFINDEX || std::strncmp(interface->ifr_name, "can", 3) != 0) {
        return real(descriptor, request, argument);
    }
    canSocketCalls.interface = interface->ifr_name;
    if (canFault != CanFault::None || canSocketCalls.interface != "can0") {
        return Refuse(ENODEV);
    }
    interface->ifr_ifindex = interfaceIndex;
    return 0;
}

extern "C" int bind(int descriptor, const sockaddr* address, socklen_t size) noexcept
{
    static auto* real = Real<int(int, const sockaddr*, socklen_t)>("bind");
    if (address->sa_family != AF_CAN) {
        return real(descriptor, address, size);
    }
    sockaddr_can can = {};
    std::memcpy(&can, address, std::min<std::size_t>(size, sizeof can));
    canSocketCalls.boundFamily = can.can_family;
    canSocketCalls.boundIndex = can.can_ifindex;
    return can.can_ifindex == interfaceIndex ? 0 : Refuse(ENODEV);
}
