#include "protocols/KernelVersion.h"

#include <QStringList>

QString BuildStampOf(const QString& version)
{
    const QStringList words = version.split(' ');
    return words.size() > 6 ? QStringList(words.mid(words.size() - 6)).join(' ') : QString();
}
