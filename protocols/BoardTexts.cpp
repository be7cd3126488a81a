#include "protocols/BoardTexts.h"

#include <QList>

#include <cstdlib>

int RotationOf(const QByteArray& calibration)
{
    // The line ends at its first NUL.
    const QList<QByteArray> fields = QByteArray(calibration.constData()).split(' ');
    if (fields.size() != 10) {
        return 0;
    }
    const int rotation = fields[9].trimmed().toInt();
    return rotation >= 0 && rotation <= 3 ? rotation : 0;
}

int CountOf(const QByteArray& output)
{
    return static_cast<int>(std::strtol(output.constData(), nullptr, 10));
}

int SdCardsAmong(int mmcDevices)
{
    return mmcDevices > 0 ? mmcDevices - 1 : 0;
}

QString BuildStampOf(const QString& version)
{
    return version.count(' ') >= 6 ? version.section(' ', -6) : QString();
}

bool PingAnswered(const QString& output)
{
    return output.contains("TTL=") || output.contains("ttl=");
}
