// Feeds the parser of the flashing log with inputs from libFuzzer. An input is the chunks of a log,
// each after a byte with its length.

#include "protocols/FlashingLogParser.h"

#include "tests/fuzz/Require.h"

#include <QByteArray>

namespace
{

QVector<QByteArray> ChunksOf(const QByteArray& input)
{
    QVector<QByteArray> chunks;
    for (int at = 0; at < input.size();) {
        const int size = static_cast<unsigned char>(input.at(at));
        chunks.append(input.mid(at + 1, size));
        at += 1 + size;
    }
    return chunks;
}

/// The results of parsing some chunks.
struct Outcome {
    QString echo;
    int results = 0;
};

Outcome Play(const QVector<QByteArray>& chunks)
{
    Outcome outcome;
    FlashingLogParser log;
    for (const QByteArray& chunk : chunks) {
        for (const LogPiece& piece : log.Take(chunk)) {
            outcome.echo += piece.echo;
            outcome.results += piece.result ? 1 : 0;
            Require(!piece.result || piece.result->textKey.startsWith("Label_10005"),
                    "a known text");
        }
    }
    return outcome;
}

/// Counts the lines that hold a marker, in another way than the parser does.
int CountMarkers(const QVector<QByteArray>& chunks)
{
    int count = 0;
    QString line;
    for (const QByteArray& chunk : chunks) {
        const bool hasFeed = chunk.contains('\n');
        const char end = !hasFeed && chunk.indexOf('\r') > 0 ? '\r' : '\n';
        bool isCut = false;
        QByteArray piece;
        const auto endPiece = [&piece, &line, &isCut] {
            line += QString::fromUtf8(piece);
            piece.clear();
            isCut = false;
        };
        for (const char byte : chunk) {
            if (byte == end) {
                endPiece();
                count += FlashingLogParser().Judge(line) ? 1 : 0;
                line.clear();
            } else if (byte == '\0' || isCut) {
                isCut = true;
            } else {
                piece += byte;
            }
        }
        endPiece();
    }
    return count;
}

bool IsPlain(const QByteArray& bytes)
{
    for (const char byte : bytes) {
        if (byte == '\r' || static_cast<signed char>(byte) <= 0) {
            return false;
        }
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size)
{
    const QByteArray input(reinterpret_cast<const char*>(bytes), static_cast<int>(size));
    const QVector<QByteArray> chunks = ChunksOf(input);
    const Outcome outcome = Play(chunks);
    Require(outcome.results == CountMarkers(chunks), "one result for each line with a marker");

    QByteArray all;
    for (const QByteArray& chunk : chunks) {
        all += chunk;
    }
    if (IsPlain(all)) {
        Require(outcome.echo == QString::fromLatin1(all), "the echo is the log");
        Require(outcome.results == Play({all}).results, "chunks make no difference");
    }
    return 0;
}
