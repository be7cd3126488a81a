#include "frame/StopSignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace
{

/// A pipe: a signal handler writes to the second end, the event loop waits at the first.
int s_pipe[2] = {-1, -1};

/// Writing to a pipe is among the few things that a signal handler may do.
void OnSignal(int /*signal*/)
{
    const int error = errno;
    // A pipe that is full has already told the event loop.
    [[maybe_unused]] const ssize_t written = write(s_pipe[1], "", 1);
    errno = error;
}

/// Also takes the place of the handlers that Qt's linuxfb has set, which end the process at once.
void Handle(int signal)
{
    struct sigaction action = {};
    if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) {
        return;
    }
    action = {};
    action.sa_handler = OnSignal;
    // A check that reads a command's output must not take the signal for the end of it.
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
}

} // namespace

StopSignals::StopSignals()
{
    if (pipe2(s_pipe, O_CLOEXEC | O_NONBLOCK) != 0) {
        qWarning("Cannot wait for signals: %s", std::strerror(errno));
        return;
    }
    auto* notifier = new QSocketNotifier(s_pipe[0], QSocketNotifier::Read, this);
    // By name: the pointer to this signal is newer than the board's Qt.
    connect(notifier, SIGNAL(activated(int)), SLOT(OnSignalled()));
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        Handle(signal);
    }
}

void StopSignals::OnSignalled()
{
    char byte = 0;
    [[maybe_unused]] const ssize_t count = read(s_pipe[0], &byte, 1);
    QCoreApplication::quit();
}
