#include "protocols/Calibration.h"

#include <QByteArray>
#include <QList>

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
