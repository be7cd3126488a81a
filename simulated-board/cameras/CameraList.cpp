#include "simulated-board/cameras/CameraList.h"

#include <QFile>
#include <QList>

QVector<BoardCamera> CamerasOfTheBoard()
{
    QVector<BoardCamera> cameras;
    // A line has the device, the colour and the description. The description may contain blanks.
    QFile file("/run/board/cameras");
    if (!file.open(QIODevice::ReadOnly)) {
        return cameras;
    }
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray& line : lines) {
        const QString text = QString::fromUtf8(line);
        if (text.count(' ') >= 2) {
            cameras.append({text.section(' ', 0, 0).toUtf8(), text.section(' ', 2),
                            QColor(text.section(' ', 1, 1))});
        }
    }
    return cameras;
}
