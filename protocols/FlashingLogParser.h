#pragma once

#include <QString>
#include <QVector>

#include <optional>

class QByteArray;

/// What a line of the flashing log with a marker tells the operator.
struct LogResult {
    QString textKey; ///< the language key of its text
    bool ok;
};

/// A piece of the flashing log as it was received, and the result of the line that it completes.
struct LogPiece {
    QString echo;
    std::optional<LogResult> result;
};

/// The log that a board prints while it is flashed. Its markers stand in one table in the source
/// file. Nothing is judged by words such as "fail", of which a good run is full.
class FlashingLogParser
{
public:
    /// Takes in a chunk just as it was received; a line may come in several.
    ///
    /// Lines end in line feeds. A chunk that holds none is cut at its carriage returns, but not
    /// when it begins with one. A piece's text ends at its first NUL.
    QVector<LogPiece> Take(const QByteArray& chunk);

    /// Judges a complete line by the first marker of the table that it holds.
    std::optional<LogResult> Judge(const QString& line);

    /// Forgets what was burnt, for the next board. An incomplete line stays.
    void Reset();

private:
    QString m_pendingLine;
    bool m_hasRootfs = false;
    bool m_hasUboot = false;
};
