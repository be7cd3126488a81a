#include "simulated-board/devices/Air.h"

#include "simulated-board/Escapes.h"

#include <QFile>

namespace
{

QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

QList<Station> StationsInTheAir()
{
    QList<Station> stations;
    const QList<QByteArray> lines = ReadFile("/run/board/wifi/air").split('\n');
    for (const QByteArray& line : lines) {
        const QList<QByteArray> words = line.split(' ');
        if (words.size() >= 3) {
            stations.append({Unescaped(words[0]), words[1], Unescaped(words[2]),
                             words.contains("hidden"), words.contains("slow")});
        }
    }
    return stations;
}

qint64 ScanTime()
{
    return static_cast<qint64>(ReadFile("/run/board/wifi/scan-time").toDouble() * 1000);
}
