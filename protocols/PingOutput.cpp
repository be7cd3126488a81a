#include "protocols/PingOutput.h"

#include <QString>

bool PingAnswered(const QString& output)
{
    return output.contains("TTL=") || output.contains("ttl=");
}
