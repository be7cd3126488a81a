#include "instruments/Shell.h"

#include <QDebug>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

void RunShell(const QByteArray& command)
{
    if (std::system(command.constData()) == -1) {
        qWarning("Cannot run \"%s\": %s", command.constData(), std::strerror(errno));
    }
}

std::optional<QByteArray> ReadShell(const QByteArray& command, int limit)
{
    FILE* pipe = popen(command.constData(), "r");
    if (pipe == nullptr) {
        qWarning("Cannot run \"%s\": %s", command.constData(), std::strerror(errno));
        return std::nullopt;
    }
    QByteArray output(limit, '\0');
    output.resize(static_cast<int>(std::fread(output.data(), 1, output.size(), pipe)));
    pclose(pipe);
    return output;
}
