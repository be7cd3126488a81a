#include "simulated-board/Escapes.h"

namespace
{

const QByteArray escapedBytes = "\"\\\033\n\r\t";
const QByteArray escapeLetters = "\"\\enrt";

} // namespace

QByteArray Unescaped(const QByteArray& text)
{
    QByteArray bytes;
    for (int i = 0; i < text.size(); ++i) {
        const int letter = escapeLetters.indexOf(text.mid(i + 1, 1));
        if (text[i] != '\\' || i + 1 == text.size()) {
            bytes += text[i];
        } else if (text[i + 1] == 'x') {
            bytes += QByteArray::fromHex(text.mid(i + 2, 2));
            i += 3;
        } else if (letter >= 0) {
            bytes += escapedBytes[letter];
            i += 1;
        }
    }
    return bytes;
}

QByteArray Printed(const QByteArray& name)
{
    QByteArray text;
    for (const char c : name) {
        const int escape = escapedBytes.indexOf(c);
        if (escape >= 0) {
            text += '\\';
            text += escapeLetters[escape];
        } else {
            text += c >= ' ' && c <= '~' ? QByteArray(1, c) : "\\x" + QByteArray(1, c).toHex();
        }
    }
    return text;
}
