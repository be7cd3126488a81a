// The supplicant of the simulated board. It serves the control interface of wpa_supplicant, so the
// real wpa_cli is its client.
//
//   board-supplicant

#include "simulated-board/devices/Supplicant.h"

#include <cstdio>

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace
{

const sockaddr_un ownAddress = {AF_UNIX, "/run/wpa_supplicant/wlan0"};

/// How often to check whether a slow network has been joined, in ms.
const int settleInterval = 100;

/// Answers one request. A client that has gone meanwhile is ignored.
void Serve(int descriptor, Supplicant& supplicant)
{
    char request[4096];
    sockaddr_un client = {};
    socklen_t clientSize = sizeof client;
    const ssize_t size = recvfrom(descriptor, request, sizeof request, 0,
                                  reinterpret_cast<sockaddr*>(&client), &clientSize);
    if (size < 0) {
        return;
    }
    const QByteArray answer = supplicant.Answer({request, static_cast<int>(size)});
    supplicant.Settle();
    if (supplicant.IsTerminated()) {
        unlink(ownAddress.sun_path);
    }
    sendto(descriptor, answer.constData(), static_cast<std::size_t>(answer.size()), MSG_DONTWAIT,
           reinterpret_cast<sockaddr*>(&client), clientSize);
}

} // namespace

int main()
{
    mkdir("/run/wpa_supplicant", 0700);
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM, 0);
    const auto* address = reinterpret_cast<const sockaddr*>(&ownAddress);
    if (bind(descriptor, address, sizeof ownAddress) != 0) {
        std::perror(ownAddress.sun_path);
        return 1;
    }
    Supplicant supplicant;
    while (!supplicant.IsTerminated()) {
        pollfd state = {descriptor, POLLIN, 0};
        if (poll(&state, 1, settleInterval) > 0) {
            Serve(descriptor, supplicant);
        }
        supplicant.Settle();
    }
    return 0;
}
