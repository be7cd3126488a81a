#include "protocols/Player.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace
{

/// Whether the character means nothing to the shell, wherever it stands in a word.
bool IsOrdinary(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') ||
           (character != '\0' && std::strchr("/._-+,:@%", character) != nullptr);
}

/// The name in quotes that the shell takes as they are, cut so that it has `limit` bytes at most
/// with its quotes: a name must never lose the quote that closes it.
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
