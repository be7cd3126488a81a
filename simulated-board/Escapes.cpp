#include "simulated-board/Escapes.h"

#include <string_view>

namespace
{

constexpr std::string_view escapedBytes = "\"\\\033\n\r\t";
constexpr std::string_view escapeLetters = "\"\\enrt";

} // namespace

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
