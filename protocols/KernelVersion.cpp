#include "protocols/KernelVersion.h"

#include <QString>

QString BuildStampOf(const QString& version)
{
    return version.count(' ') >= 6 ? version.section(' ', -6) : QString();
}
