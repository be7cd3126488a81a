#include "protocols/Calibration.h"

#include <QByteArray>
#include <QStringList>

int RotationOf(const QByteArray& calibration)
{
    const QStringList fields = QString(calibration.constData()).split(' ');
    if (fields.size() != 10) {
        return 0;
    }
    const int rotation = fields[9].toInt();
    return rotation >= 0 && rotation <= 3 ? rotation : 0;
}
