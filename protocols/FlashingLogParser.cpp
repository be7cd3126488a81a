#include "protocols/FlashingLogParser.h"

#include <QByteArray>

#include <array>
#include <iterator>

namespace
{

/// How a line with a marker is judged.
enum class Rule {
    Pass,
    RootfsBurnt, ///< passes, and is remembered for EverythingBurnt
    UbootBurnt,  ///< passes, and is remembered for EverythingBurnt
    EverythingBurnt,
    OkInLine, ///< "ok" anywhere in the line, but not as its first word
    OkBehindMarker,
};

struct Marker {
    const char* text;
    Rule rule;
    const char* passKey;
    const char* failKey;
};

/// A line is judged by the first marker of this table that it holds. The texts are spelled as the
/// flashing tool and the board's self-test print them, with their grammar.
constexpr Marker markers[] = {
    {"begin to erase flash", Rule::Pass, "Label_1000515", nullptr},
    {"successed in erasing flash", Rule::Pass, "Label_1000516", nullptr},
    {"successed in download part rootfs", Rule::RootfsBurnt, "Label_1000505", nullptr},
    {"successed in downloading uboot", Rule::UbootBurnt, "Label_1000504", nullptr},
    {"sprite success", Rule::EverythingBurnt, "Label_1000502", "Label_1000506"},
    {"mmc 2 exit", Rule::Pass, "Label_1000503", nullptr},
    {"MOSK_HARD_NET:", Rule::OkInLine, "Label_1000507", "Label_1000508"},
    {"MOSK_HARD_EMMC:", Rule::OkBehindMarker, "Label_1000509", "Label_1000510"},
    {"MOSK_HARD_DDR:", Rule::OkBehindMarker, "Label_1000511", "Label_1000512"},
};

/// Which letters markers begin with.
constexpr auto firstLetters = [] {
    std::array<bool, 128> letters{};
    for (const Marker& marker : markers) {
        letters[*marker.text] = true;
    }
    return letters;
}();

/// Whether a text, which ends with a NUL, begins with a marker.
bool BeginsWith(const QChar* text, const char* marker)
{
    while (*marker != '\0' && *text == QLatin1Char(*marker)) {
        ++text;
        ++marker;
    }
    return *marker == '\0';
}

/// What is kept of a line that does not end, in characters. The oldest text is dropped when there
/// is a quarter more than this.
const int keptOfALine = 4000000;

/// The text of a chunk from `begin` to `end`, or to the first NUL before that.
QString TextOf(const QByteArray& chunk, int begin, int end)
{
    const char* text = chunk.constData() + begin;
    return QString::fromUtf8(text, static_cast<int>(qstrnlen(text, end - begin)));
}

} // namespace

QVector<LogPiece> FlashingLogParser::Take(const QByteArray& chunk)
{
    const bool endsWithReturns = !chunk.contains('\n') && chunk.indexOf('\r') >= 1;
    const QLatin1Char separator(endsWithReturns ? '\r' : '\n');

    QVector<LogPiece> pieces;
    int begin = 0;
    for (int end = chunk.indexOf(separator.toLatin1()); end >= 0;
         end = chunk.indexOf(separator.toLatin1(), begin)) {
        const QString text = TextOf(chunk, begin, end);
        m_pendingLine += text;
        pieces.append({text + separator, Judge(m_pendingLine.right(keptOfALine))});
        m_pendingLine.clear();
        begin = end + 1;
    }
    const QString rest = TextOf(chunk, begin, chunk.size());
    if (!rest.isEmpty()) {
        pieces.append({rest, std::nullopt});
        m_pendingLine += rest;
        if (m_pendingLine.size() > keptOfALine + keptOfALine / 4) {
            m_pendingLine.remove(0, m_pendingLine.size() - keptOfALine);
        }
    }
    return pieces;
}

std::optional<LogResult> FlashingLogParser::Judge(const QString& line)
{
    const Marker* marker = std::end(markers);
    int place = 0;
    // One pass for all markers, because nearly all lines hold none.
    for (int at = 0; at < line.size(); ++at) {
        const ushort letter = line.at(at).unicode();
        if (letter >= firstLetters.size() || !firstLetters[letter]) {
            continue;
        }
        for (const Marker* better = markers; better != marker; ++better) {
            if (BeginsWith(line.constData() + at, better->text)) {
                marker = better;
                place = at;
                break;
            }
        }
    }
    if (marker == std::end(markers)) {
        return std::nullopt;
    }
    bool ok = true;
    switch (marker->rule) {
    case Rule::Pass:
        break;
    case Rule::RootfsBurnt:
        m_hasRootfs = true;
        break;
    case Rule::UbootBurnt:
        m_hasUboot = true;
        break;
    case Rule::EverythingBurnt:
        // Both flags stay set until Reset(): a second board flashed without a Reset() inherits
        // them.
        ok = m_hasRootfs && m_hasUboot;
        break;
    case Rule::OkInLine:
        ok = line.indexOf("ok", 1) >= 1;
        break;
    case Rule::OkBehindMarker:
        ok = line.indexOf("ok", place + static_cast<int>(qstrlen(marker->text))) >= 0;
        break;
    }
    return LogResult{ok ? marker->passKey : marker->failKey, ok};
}

void FlashingLogParser::Reset()
{
    m_hasRootfs = false;
    m_hasUboot = false;
}
