#include "protocols/FlashingLogParser.h"

#include <QByteArray>
#include <QList>

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
const Marker markers[] = {
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

/// The text of the bytes up to their first NUL.
QString TextOf(const QByteArray& bytes)
{
    return QString::fromUtf8(bytes.constData(),
                             static_cast<int>(qstrnlen(bytes.constData(), bytes.size())));
}

} // namespace

QVector<LogPiece> FlashingLogParser::Take(const QByteArray& chunk)
{
    if (chunk.isEmpty()) {
        return {};
    }
    char separator = '\n';
    QList<QByteArray> lines = chunk.split(separator);
    if (lines.size() < 2 && chunk.indexOf('\r') >= 1) {
        separator = '\r';
        lines = chunk.split(separator);
    }
    const QString rest = TextOf(lines.takeLast());

    QVector<LogPiece> pieces;
    pieces.reserve(lines.size() + 1);
    for (const QByteArray& line : qAsConst(lines)) {
        const QString text = TextOf(line);
        pieces.append({text + separator, Judge(m_pendingLine + text)});
        m_pendingLine.clear();
    }
    if (!rest.isEmpty()) {
        pieces.append({rest, std::nullopt});
        m_pendingLine += rest;
    }
    return pieces;
}

std::optional<LogResult> FlashingLogParser::Judge(const QString& line)
{
    for (const Marker& marker : markers) {
        const int place = line.indexOf(QLatin1String(marker.text));
        if (place < 0) {
            continue;
        }
        bool ok = true;
        switch (marker.rule) {
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
            ok = line.indexOf("ok", place + static_cast<int>(qstrlen(marker.text))) >= 0;
            break;
        }
        return LogResult{ok ? marker.passKey : marker.failKey, ok};
    }
    return std::nullopt;
}

void FlashingLogParser::Reset()
{
    m_hasRootfs = false;
    m_hasUboot = false;
}
