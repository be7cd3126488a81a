#include "protocols/FlashingLog.h"

#include <QByteArray>
#include <QList>

namespace
{

/// The text of the bytes up to their first NUL.
QString TextOf(const QByteArray& bytes)
{
    return QString::fromUtf8(bytes.constData(),
                             static_cast<int>(qstrnlen(bytes.constData(), bytes.size())));
}

/// Whether "ok" stands behind a marker that the line holds.
bool OkBehind(const QString& line, const QString& marker)
{
    return line.indexOf("ok", line.indexOf(marker) + marker.size()) >= 0;
}

} // namespace

QVector<LogPiece> SplitLog(const QByteArray& chunk)
{
    if (chunk.isEmpty()) {
        return {};
    }
    char separator = '\n';
    QList<QByteArray> pieces = chunk.split(separator);
    if (pieces.size() < 2 && chunk.indexOf('\r') >= 1) {
        separator = '\r';
        pieces = chunk.split(separator);
    }

    QVector<LogPiece> split;
    split.reserve(pieces.size());
    for (int i = 0; i < pieces.size() - 1; ++i) {
        split.append({TextOf(pieces.at(i)), QChar(separator)});
    }
    split.append({TextOf(pieces.last()), QString()});
    return split;
}

LogMarker FindMarker(const QString& line)
{
    if (line.contains("begin to erase flash")) {
        return LogMarker::EraseBegun;
    }
    if (line.contains("successed in erasing flash")) {
        return LogMarker::EraseDone;
    }
    if (line.contains("successed in download part rootfs")) {
        return LogMarker::RootfsDone;
    }
    if (line.contains("successed in downloading uboot")) {
        return LogMarker::UbootDone;
    }
    if (line.contains("sprite success")) {
        return LogMarker::SpriteDone;
    }
    if (line.contains("mmc 2 exit")) {
        return LogMarker::Shutdown;
    }
    if (line.contains("MOSK_HARD_NET:")) {
        // The network's "ok" may stand before the marker, but not first in the line.
        return line.indexOf("ok", 1) >= 1 ? LogMarker::NetworkOk : LogMarker::NetworkBad;
    }
    if (line.contains("MOSK_HARD_EMMC:")) {
        return OkBehind(line, "MOSK_HARD_EMMC:") ? LogMarker::EmmcOk : LogMarker::EmmcBad;
    }
    if (line.contains("MOSK_HARD_DDR:")) {
        return OkBehind(line, "MOSK_HARD_DDR:") ? LogMarker::DdrOk : LogMarker::DdrBad;
    }
    return LogMarker::None;
}
