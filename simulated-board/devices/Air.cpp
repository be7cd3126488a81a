#include "simulated-board/devices/Air.h"

#include <QFile>

#include <string_view>

namespace
{

constexpr std::string_view escapedBytes = "\"\\\033\n\r\t";
constexpr std::string_view escapeLetters = "\"\\enrt";

QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Returns the bytes that a text with escapes stands for.
QByteArray Unescaped(const QByteArray& text)
{
    QByteArray bytes;
    for (int i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            bytes += text[i];
        } else if (text[i + 1] == 'x') {
            bytes += QByteArray::fromHex(text.mid(i + 2, 2));
            i += 3;
        } else if (const auto letter = escapeLetters.find(text[i + 1]);
                   letter != std::string_view::npos) {
            bytes += escapedBytes[letter];
            i += 1;
        }
    }
    return bytes;
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

QByteArray Printed(const QByteArray& name)
{
    QByteArray text;
    for (const char c : name) {
        const auto escape = escapedBytes.find(c);
        if (escape != std::string_view::npos) {
            text += '\\';
            text += escapeLetters[escape];
        } else {
            text += c >= ' ' && c <= '~' ? QByteArray(1, c) : "\\x" + QByteArray(1, c).toHex();
        }
    }
    return text;
}
