#pragma once

#include <QByteArray>
#include <QMap>

/// Reads an INI file by the rules of the frp client, which are not those of QSettings: a line is a
/// line, only whole lines are comments, quotes around a value are taken off and nothing is escaped,
/// and of two equal keys the later one counts. Keys are "section/key".
inline QMap<QByteArray, QByteArray> ReadAsFrp(QByteArray content)
{
    QMap<QByteArray, QByteArray> values;
    QByteArray section;
    if (content.startsWith("\xef\xbb\xbf")) {
        content.remove(0, 3);
    }
    const QList<QByteArray> lines = content.split('\n');
    for (int i = 0; i < lines.size(); ++i) {
        const QByteArray line = lines[i].trimmed();
        if (line.isEmpty() || line[0] == '#' || line[0] == ';') {
            continue;
        }
        if (line[0] == '[') {
            section = line.mid(1, line.lastIndexOf(']') - 1).trimmed();
            continue;
        }
        int delimiter = line.indexOf('=');
        const int colon = line.indexOf(':');
        if (delimiter < 0 || (colon >= 0 && colon < delimiter)) {
            delimiter = colon;
        }
        QByteArray value = delimiter < 0 ? QByteArray("true") : line.mid(delimiter + 1).trimmed();
        while (value.endsWith('\\') && i + 1 < lines.size()) {
            value = value.left(value.size() - 1) + lines[++i].trimmed();
        }
        for (const char quote : {'"', '\''}) {
            if (value.size() >= 2 && value[0] == quote &&
                value.indexOf(quote, 1) == value.size() - 1) {
                value = value.mid(1, value.size() - 2);
                break;
            }
        }
        values[section + '/' + line.left(delimiter).trimmed()] = value;
    }
    return values;
}
