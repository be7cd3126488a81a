#include "instruments/Shell.h"

#include <QDebug>
#include <QProcess>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{

/// Lets the commands that are started while it exists end at SIGPIPE, as a command must when nobody
/// reads its output any more. The program ignores this signal, and a new process keeps what is
/// ignored, but loses what is handled. So an empty handler stands while a command is started.
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

/// Logs that a command could not be started, but not its arguments: a passphrase may be among them.
void WarnOf(const QByteArray& command)
{
    qWarning("Cannot run %s: %s", command.split(' ').first().constData(), std::strerror(errno));
}

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
        WarnOf(command);
    }
}

std::optional<QByteArray> ReadShell(const QByteArray& command, int limit)
{
    FILE* pipe = OpenPipe(command);
    if (pipe == nullptr) {
        WarnOf(command);
        return std::nullopt;
    }
    QByteArray output(limit, '\0');
    output.resize(static_cast<int>(std::fread(output.data(), 1, output.size(), pipe)));
    pclose(pipe);
    return output;
}

void ReadLines(const QString& program, const QStringList& arguments,
               const std::function<void(const QByteArray& line)>& take)
{
    QProcess process;
    process.start(program, arguments, QIODevice::ReadWrite);
    do {
        process.waitForReadyRead(1000);
        while (process.canReadLine()) {
            take(process.readLine());
        }
    } while (process.state() != QProcess::NotRunning);
}
