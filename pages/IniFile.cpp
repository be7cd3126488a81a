#include "pages/IniFile.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSettings>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>

namespace
{

const QByteArray byteOrderMark = "\xef\xbb\xbf";

bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

bool IsLineEnd(char c)
{
    return c == '\n' || c == '\r';
}

int SkipBlanks(const QByteArray& content, int pos)
{
    while (pos < content.size() && IsBlank(content[pos])) {
        ++pos;
    }
    return pos;
}

/// Where the line that begins at `pos` ends, its line end left out.
int LineEnd(const QByteArray& content, int pos)
{
    while (pos < content.size() && !IsLineEnd(content[pos])) {
        ++pos;
    }
    return pos;
}

/// Where the line after the one that ends at `end` begins.
int NextLine(const QByteArray& content, int end)
{
    if (content.mid(end, 2) == "\r\n") {
        return end + 2;
    }
    return qMin(end + 1, content.size());
}

int FirstLine(const QByteArray& content)
{
    return content.startsWith(byteOrderMark) ? byteOrderMark.size() : 0;
}

/// The line ends that the file uses.
QByteArray LineEndOf(const QByteArray& content)
{
    const int end = LineEnd(content, 0);
    const QByteArray lineEnd = content.mid(end, NextLine(content, end) - end);
    return lineEnd.isEmpty() ? QByteArray("\n") : lineEnd;
}

/// The section that a header line opens; empty for the general one.
QByteArray SectionOf(const QByteArray& header)
{
    const int close = header.indexOf(']');
    const QByteArray section = header.mid(1, close < 0 ? -1 : close - 1).trimmed();
    return section.toLower() == "general" ? QByteArray() : section;
}

QByteArray HeaderOf(const QByteArray& section)
{
    return '[' + (section.isEmpty() ? QByteArray("General") : section) + ']';
}

/// The end of the value within a line: what follows an unquoted semicolon is a comment.
int ValueEnd(const QByteArray& line, int pos)
{
    bool inQuotes = false;
    const int start = pos;
    for (; pos < line.size(); ++pos) {
        if (line[pos] == '\\') {
            ++pos;
        } else if (line[pos] == '"') {
            inQuotes = !inQuotes;
        } else if (line[pos] == ';' && !inQuotes) {
            while (pos > start && IsBlank(line[pos - 1])) {
                --pos;
            }
            return pos;
        }
    }
    return line.size();
}

/// A quote left open or a back-slash at its end make QSettings take a line and the next for one,
/// which plainer readers do not. The begin of the first such line; -1 without one.
int FirstJoinedLine(const QByteArray& content)
{
    int pos = FirstLine(content);
    while (pos < content.size()) {
        const int start = pos;
        pos = SkipBlanks(content, pos);
        if (pos < content.size() && content[pos] == ';') {
            pos = NextLine(content, LineEnd(content, pos));
            continue;
        }
        bool inQuotes = false;
        for (; pos < content.size() && !IsLineEnd(content[pos]); ++pos) {
            if (content[pos] == '\\' && pos + 1 < content.size()) {
                ++pos;
                if (IsLineEnd(content[pos])) {
                    return start;
                }
            } else if (content[pos] == '"') {
                inQuotes = !inQuotes;
            } else if (content[pos] == ';' && !inQuotes) {
                pos = LineEnd(content, pos);
                break;
            }
        }
        if (inQuotes) {
            return start;
        }
        pos = NextLine(content, pos);
    }
    return -1;
}

/// What an edit knows after it went through the lines.
struct Places {
    int firstWritten = -1; ///< the first line that holds the entry
    int sectionEnd = -1;   ///< behind the last line of the entry's section that says something
};

/// Gives the lines that hold the entry's key the entry's value, in `result`.
Places ReplaceLines(const QByteArray& content, const IniEntry& entry, QByteArray* result)
{
    Places places;
    QByteArray section;
    *result = content.left(FirstLine(content));
    for (int pos = FirstLine(content); pos < content.size();) {
        const int end = LineEnd(content, pos);
        const int next = NextLine(content, end);
        QByteArray line = content.mid(pos, end - pos);
        const int start = SkipBlanks(line, 0);
        const char first = start < line.size() ? line.at(start) : '\0';
        const bool isHeader = first == '[';
        const bool isComment = first == ';' || first == '#';
        const int equals = isHeader || isComment ? -1 : line.indexOf('=');
        if (isHeader) {
            section = SectionOf(line.mid(start));
        }
        if (equals >= 0 && section == entry.section && line.left(equals).trimmed() == entry.key) {
            const int value = SkipBlanks(line, equals + 1);
            line.replace(value, ValueEnd(line, value) - value, IniText(entry.value));
            // Behind a byte-order mark QSettings does not see the first line.
            const bool isSeen = pos == 0 || pos > FirstLine(content);
            if (isSeen && places.firstWritten < 0) {
                places.firstWritten = result->size();
            }
        }
        *result += line + content.mid(end, next - end);
        if (section == entry.section && (isHeader || equals >= 0)) {
            places.sectionEnd = result->size();
        }
        pos = next;
    }
    return places;
}

/// The section whose lines stand at `pos`.
QByteArray SectionAt(const QByteArray& content, int pos)
{
    QByteArray section;
    for (int line = FirstLine(content); line < pos;) {
        const int end = LineEnd(content, line);
        const int start = SkipBlanks(content, line);
        if (start < end && content[start] == '[') {
            section = SectionOf(content.mid(start, end - start));
        }
        line = NextLine(content, end);
    }
    return section;
}

void ReplaceFile(const QString& path, const QByteArray& content)
{
    // Writes beside the file, synchronises and renames; through a symbolic link to its target. With
    // a folder that takes no new file nothing is written: in place it could end as half a file.
    QSaveFile file(path);
    struct stat old = {};
    const bool isThere = stat(QFile::encodeName(path).constData(), &old) == 0;
    if (!file.open(QIODevice::WriteOnly)) {
        qWarning() << path << file.errorString();
        return;
    }
    if (isThere && (fchown(file.handle(), old.st_uid, old.st_gid) != 0 ||
                    fchmod(file.handle(), old.st_mode & 07777) != 0)) {
        qWarning("Cannot keep the owner of %s: %s", qPrintable(path), std::strerror(errno));
    }
    // commit() alone would not notice that the last bytes found no room.
    if (file.write(content) != content.size() || !file.flush() || !file.commit()) {
        qWarning() << path << file.errorString();
    }
}

} // namespace

void WriteIniFile(const QString& path, const QVector<IniEntry>& entries)
{
    const QFileInfo info(path);
    QByteArray content;
    if (info.exists()) {
        // A folder or a pipe in the file's place would never end.
        QFile file(path);
        if (!info.isFile() || !file.open(QIODevice::ReadOnly)) {
            qWarning() << "Cannot read" << path << file.errorString();
            return;
        }
        content = file.readAll();
    }

    const QByteArray old = content;
    const QSettings settings(path, QSettings::IniFormat);
    for (const IniEntry& entry : entries) {
        const QString key = entry.section.isEmpty() ? entry.key : entry.section + '/' + entry.key;
        if (!settings.contains(key) || settings.value(key).toString() != entry.value) {
            content = IniWithEntry(content, entry);
        }
    }
    if (content != old) {
        ReplaceFile(path, content);
    }
}

QByteArray IniWithEntry(const QByteArray& content, const IniEntry& entry)
{
    const QByteArray lineEnd = LineEndOf(content);
    const QByteArray line = entry.key + '=' + IniText(entry.value) + lineEnd;

    QByteArray result;
    Places places = ReplaceLines(content, entry, &result);
    if (places.firstWritten < 0) {
        QByteArray added = line;
        if (places.sectionEnd < 0) {
            added.prepend(HeaderOf(entry.section) + lineEnd);
            if (result.size() > FirstLine(result)) {
                added.prepend(lineEnd);
            }
            places.sectionEnd = result.size();
        }
        if (places.sectionEnd > FirstLine(result) && !IsLineEnd(result.at(places.sectionEnd - 1))) {
            added.prepend(lineEnd);
        }
        result.insert(places.sectionEnd, added);
        places.firstWritten = places.sectionEnd;
    }

    // What stands behind a line that QSettings does not see the end of is written before it, too.
    const int joined = FirstJoinedLine(result);
    if (joined >= 0 && joined < places.firstWritten) {
        const QByteArray section = SectionAt(result, joined);
        const QByteArray added = section == entry.section ? line
                                                          : HeaderOf(entry.section) + lineEnd +
                                                                line + HeaderOf(section) + lineEnd;
        result.insert(joined, added);
    }
    return result;
}

QByteArray IniText(const QString& value)
{
    QByteArray text;
    bool afterHex = false;
    // QSettings takes an "@" in front for a type of its own in these cases; it drops one of two.
    if (value.startsWith("@@") || (value.startsWith('@') && value.endsWith(')'))) {
        text += '@';
    }
    for (const QChar character : value) {
        const ushort code = character.unicode();
        if (code == '"' || code == '\\') {
            text += '\\';
            text += static_cast<char>(code);
            afterHex = false;
        } else if (code < 0x20 || code >= 0x7f || (afterHex && std::isxdigit(code))) {
            // A hexadecimal escape goes on for as long as hexadecimal digits follow.
            text += "\\x" + QByteArray::number(code, 16);
            afterHex = true;
        } else {
            text += static_cast<char>(code);
            afterHex = false;
        }
    }
    const bool isPlain = std::none_of(text.cbegin(), text.cend(),
                                      [](char c) { return std::strchr(";,=#'`", c) != nullptr; });
    if (!isPlain || text.startsWith(' ') || text.endsWith(' ')) {
        return '"' + text + '"';
    }
    return text;
}
