#include "instruments/Shell.h"

#include <QDebug>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{

/// While an object of this class exists, commands start with the default action for SIGPIPE: a
/// command ends when nobody reads its output any more. The program ignores the signal. Commands
/// would inherit this, and a shell cannot change it. A signal that has a handler, even an empty
/// one, has its default action in a command.
class DefaultSigPipe
{
public:
    DefaultSigPipe()
    {
        struct sigaction action = {};
        action.sa_handler = [](int /*signal*/) {};
        action.sa_flags = SA_RESTART;
        sigaction(SIGPIPE, &action, &m_before);
    }

    ~DefaultSigPipe() { sigaction(SIGPIPE, &m_before, nullptr); }

    DefaultSigPipe(const DefaultSigPipe&) = delete;
    DefaultSigPipe& operator=(const DefaultSigPipe&) = delete;

private:
    struct sigaction m_before = {};
};

FILE* OpenPipe(const QByteArray& command)
{
    const DefaultSigPipe forTheCommand;
    return popen(command.constData(), "r");
}

} // namespace

void RunShell(const QByteArray& command)
{
    const DefaultSigPipe forTheCommand;
    if (std::system(command.constData()) == -1) {
        qWarning("Cannot run \"%s\": %s", command.constData(), std::strerror(errno));
    }
}

std::optional<QByteArray> ReadShell(const QByteArray& command, int limit)
{
    FILE* pipe = OpenPipe(command);
    if (pipe == nullptr) {
        qWarning("Cannot run \"%s\": %s", command.constData(), std::strerror(errno));
        return std::nullopt;
    }
    QByteArray output(limit, '\0');
    output.resize(static_cast<int>(std::fread(output.data(), 1, output.size(), pipe)));
    pclose(pipe);
    return output;
}
