#include "protocols/IniFile.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace
{

const char* const byteOrderMark = "\xef\xbb\xbf";

/// Where a key is in a file's content. A position is -1 when there is none.
struct Place {
    int value = -1;
    QByteArray spelled;  ///< the value as it is written, without the blanks around it
    int sectionEnd = -1; ///< after the last header or key line of the key's section
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

/// The name of the section that a header line begins.
QByteArray SectionOf(const QByteArray& header)
{
    const int close = header.indexOf(']');
    const QByteArray section = header.mid(1, close < 0 ? -1 : close - 1).trimmed();
    return section.toLower() == "general" ? "General" : section;
}

/// The end of a value whose search begins at `pos`: the end of the line, or a comment. A comment is
/// a semicolon outside quotes that follows a blank; "a;b" is a value.
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
        // If two lines have the same key, the later one counts, as for QSettings and the frp
        // client.
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

/// The character of an escape. `*pos` is just after the back-slash, and moves to the end of the
/// escape. An unknown escape gives nothing, as in QSettings.
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

/// The text without the marks, beginning with "@", by which QSettings knows the types of its
/// values.
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

/// The text of a value. A value that QSettings would continue on the next line is returned
/// unchanged.
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
    // In these cases QSettings reads a leading "@" as a type mark. Of two it drops one.
    if (value.startsWith("@@") || (value.startsWith('@') && value.endsWith(')'))) {
        text += '@';
    }
    for (const QChar character : value) {
        const ushort code = character.unicode();
        // A hexadecimal escape has no fixed length. A digit that follows one is escaped too, so
        // that it does not become part of it.
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
    // QSettings reads a file with a byte-order mark as UTF-8, any other as Latin-1.
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
