#pragma once

#include <QString>
#include <QVector>

class QByteArray;

/// A piece of a chunk of the flashing log.
struct LogPiece {
    QString text;
    QString lineEnd; ///< empty while the line is not complete
};

/// Cuts a chunk of the log, just as it was received, into lines and the rest behind them.
///
/// Lines end in line feeds. A chunk that holds none is cut at its carriage returns, but not when it
/// begins with one. A piece's text ends at its first NUL.
QVector<LogPiece> SplitLog(const QByteArray& chunk);

/// What a line of the flashing log tells.
enum class LogMarker {
    None,
    EraseBegun,
    EraseDone,
    RootfsDone,
    UbootDone,
    SpriteDone,
    Shutdown,
    NetworkOk,
    NetworkBad,
    EmmcOk,
    EmmcBad,
    DdrOk,
    DdrBad,
};

/// Finds the marker in a line; the first of several decides. Nothing is judged by words such as
/// "fail", of which a good run is full.
LogMarker FindMarker(const QString& line);
