#include "protocols/Player.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace
{

/// Whether the character has no special meaning to the shell, at any place in a word.
bool IsOrdinary(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') ||
           (character != '\0' && std::strchr("/._-+,:@%", character) != nullptr);
}

/// The name in single quotes, shortened so that it has at most `limit` bytes including the quotes.
/// The closing quote is never cut off.
QByteArray Quoted(const QByteArray& name, int limit)
{
    QByteArray quoted = "'";
    for (const char character : name) {
        const QByteArray piece = character == '\'' ? QByteArray("'\\''") : QByteArray(1, character);
        if (quoted.size() + piece.size() + 1 > limit) {
            break;
        }
        quoted += piece;
    }
    return quoted + "'";
}

} // namespace

QString WithoutLineEnd(const QString& item)
{
    return item.endsWith('\n') ? item.chopped(1) : item;
}

QByteArray PlayCommand(const QString& item)
{
    QByteArray name = WithoutLineEnd(item).toUtf8();
    char command[100] = {};
    if (!std::all_of(name.begin(), name.end(), IsOrdinary)) {
        name = Quoted(name, sizeof command - sizeof "tinyplay  &");
    }
    std::snprintf(command, sizeof command, "tinyplay %s &", name.constData());
    return command;
}
