#pragma once

#include <QString>
#include <QVector>

#include <optional>

class QByteArray;

/// The verdict on a line of the flashing log that holds a marker.
struct LogResult {
    QString textKey; ///< the language key of its text
    bool ok;
};

/// A piece of the flashing log as it was received, and the verdict on the line that ends with it.
struct LogPiece {
    QString echo;
    std::optional<LogResult> result;
};

/// Reads the log that a board prints while it is flashed. Only the markers in the table of the
/// source file count. Words such as "fail" are ignored, because a good run prints many of them.
class FlashingLogParser
{
public:
    /// Takes a chunk as it was received. A line may be spread over several chunks.
    ///
    /// Lines end with a line feed. A chunk without line feeds is split at its carriage returns,
    /// unless it begins with one. A piece's text ends at its first NUL. A line is judged by its
    /// last four million characters.
    QVector<LogPiece> Take(const QByteArray& chunk);

    /// Judges a complete line by the first marker of the table that it holds.
    std::optional<LogResult> Judge(const QString& line);

    /// Forgets which parts were burnt, for the next board. An incomplete line stays.
    void Reset();

private:
    QString m_pendingLine;
    bool m_hasRootfs = false;
    bool m_hasUboot = false;
};
