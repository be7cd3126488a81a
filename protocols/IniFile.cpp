#include "protocols/IniFile.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace
{

const char* const byteOrderMark = "\xef\xbb\xbf";

/// Where a key stands in a file's content; -1 for what is not there.
struct Place {
    int value = -1;
    QByteArray spelled;  ///< the value as it stands there, without the blanks around it
    int sectionEnd = -1; ///< behind the last header or key of the key's section
};

bool IsBlank(QChar character)
{
    return character == ' ' || character == '\t';
}

bool IsLineEnd(char c)
{
    return c == '\n' || c == '\r';
}

int FirstLine(const QByteArray& content)
{
    return content.startsWith(byteOrderMark) ? int(qstrlen(byteOrderMark)) : 0;
}

/// The section that a header opens.
QByteArray SectionOf(const QByteArray& header)
{
    const int close = header.indexOf(']');
    const QByteArray section = header.mid(1, close < 0 ? -1 : close - 1).trimmed();
    return section.toLower() == "general" ? "General" : section;
}

/// Where the value that is looked for from `pos` ends at the latest: at a comment, which is a
/// semicolon outside quotes behind a blank. "a;b" is a value.
int ValueEnd(const QByteArray& line, int pos)
{
    bool inQuotes = false;
    for (; pos < line.size(); ++pos) {
        if (line[pos] == '\\') {
            ++pos;
        } else if (line[pos] == '"') {
            inQuotes = !inQuotes;
        } else if (!inQuotes && IsBlank(line[pos]) && line.mid(pos + 1, 1) == ";") {
            return pos;
        }
    }
    return line.size();
}

Place PlaceOf(const QByteArray& content, const IniKey& key)
{
    Place place;
    QByteArray section = "General";
    int end = 0;
    for (int begin = FirstLine(content); begin < content.size(); begin = end + 1) {
        end = std::find_if(content.begin() + begin, content.end(), IsLineEnd) - content.begin();
        const QByteArray line = content.mid(begin, end - begin);
        const QByteArray text = line.trimmed();
        const bool isHeader = text.startsWith('[');
        const bool isComment = text.startsWith(';') || text.startsWith('#');
        const int equals = isHeader || isComment ? -1 : line.indexOf('=');
        if (isHeader) {
            section = SectionOf(text);
        }
        if (section != key.section || (!isHeader && equals < 0)) {
            continue;
        }
        place.sectionEnd = qMin(end + (content.mid(end, 2) == "\r\n" ? 2 : 1), content.size());
        // Of two lines with the same key the later one counts, as for QSettings and the frp client.
        if (equals >= 0 && line.left(equals).trimmed() == key.name) {
            const int valueEnd = ValueEnd(line, equals + 1);
            place.spelled = line.mid(equals + 1, valueEnd - equals - 1).trimmed();
            place.value =
                begin +
                (place.spelled.isEmpty() ? valueEnd : line.indexOf(place.spelled, equals + 1));
        }
    }
    return place;
}

/// The character that the escape at `*pos`, behind its back-slash, stands for. Moves `*pos` behind
/// the escape. QSettings leaves an escape out that it does not know.
QString Unescaped(const QString& text, int* pos)
{
    static const QString names = "abfnrtv\"?'\\";
    static const QString characters = "\a\b\f\n\r\t\v\"?'\\";
    const QChar name = text[(*pos)++];
    if (names.contains(name)) {
        return characters.at(names.indexOf(name));
    }
    const bool isOctal = name >= '0' && name <= '7';
    if (name != 'x' && !isOctal) {
        return {};
    }
    const QString digits = isOctal ? "01234567" : "0123456789abcdef";
    const int start = isOctal ? *pos - 1 : *pos;
    ushort code = 0;
    for (*pos = start; *pos < text.size() && digits.contains(text[*pos].toLower()); ++*pos) {
        code = code * digits.size() + digits.indexOf(text[*pos].toLower());
    }
    return *pos > start ? QString(QChar(code)) : QString();
}

/// A text as QSettings takes it behind the "@" with which it marks the types of its values.
QString Unmarked(const QString& text)
{
    if (text.startsWith("@@")) {
        return text.mid(1);
    }
    for (const char* const type : {"@ByteArray(", "@String("}) {
        if (text.startsWith(type) && text.endsWith(')')) {
            return text.mid(qstrlen(type)).chopped(1);
        }
    }
    return text;
}

/// The text of a value. What QSettings would go on reading on the next line is taken as it stands.
QString Decoded(const QString& value)
{
    QString text;
    bool inQuotes = false;
    for (int pos = 0; pos < value.size();) {
        const QChar character = value[pos++];
        if (character == '\\') {
            if (pos == value.size()) {
                return value;
            }
            text += Unescaped(value, &pos);
        } else if (character == '"') {
            inQuotes = !inQuotes;
            while (!inQuotes && pos < value.size() && IsBlank(value[pos])) {
                ++pos;
            }
        } else {
            text += character;
        }
    }
    return inQuotes ? value : Unmarked(text);
}

QByteArray Encoded(const QString& value)
{
    QByteArray text;
    bool afterHex = false;
    // QSettings takes an "@" in front for a type of its own in these cases; it drops one of two.
    if (value.startsWith("@@") || (value.startsWith('@') && value.endsWith(')'))) {
        text += '@';
    }
    for (const QChar character : value) {
        const ushort code = character.unicode();
        // A hexadecimal escape goes on for as long as hexadecimal digits follow.
        const bool isHex = code < 0x20 || code >= 0x7f || (afterHex && std::isxdigit(code) != 0);
        if (isHex) {
            text += "\\x" + QByteArray::number(code, 16);
        } else {
            text += code == '"' || code == '\\' ? "\\" : "";
            text += static_cast<char>(code);
        }
        afterHex = isHex;
    }
    const bool isPlain = std::none_of(text.cbegin(), text.cend(),
                                      [](char c) { return std::strchr(";,=#'`", c) != nullptr; });
    return isPlain && value.trimmed() == value ? text : '"' + text + '"';
}

} // namespace

QString IniValue(const QByteArray& content, const IniKey& key)
{
    const QByteArray spelled = PlaceOf(content, key).spelled;
    // With a byte-order mark QSettings reads UTF-8, without one Latin-1.
    return Decoded(FirstLine(content) > 0 ? QString::fromUtf8(spelled)
                                          : QString::fromLatin1(spelled));
}

QByteArray IniWithValue(const QByteArray& content, const IniKey& key, const QString& value)
{
    const Place place = PlaceOf(content, key);
    if (place.value >= 0) {
        const bool isThere = IniValue(content, key) == value;
        return isThere ? content
                       : content.left(place.value) + Encoded(value) +
                             content.mid(place.value + place.spelled.size());
    }

    const QByteArray lineEnd = content.contains("\r\n") ? "\r\n" : "\n";
    QByteArray added = key.name + '=' + Encoded(value) + lineEnd;
    int pos = place.sectionEnd;
    if (pos < 0) {
        pos = content.size();
        added.prepend('[' + key.section + ']' + lineEnd);
        added.prepend(pos > FirstLine(content) ? lineEnd : "");
    }
    if (pos > FirstLine(content) && !IsLineEnd(content[pos - 1])) {
        added.prepend(lineEnd);
    }
    return content.left(pos) + added + content.mid(pos);
}
