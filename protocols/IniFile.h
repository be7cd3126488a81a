#pragma once

#include <QByteArray>
#include <QString>

/// A key of an INI file. The lines before any section are of the section General, too, as QSettings
/// has it.
struct IniKey {
    QByteArray section;
    QByteArray name;
};

/// The value of the key in an INI file's content; empty when no line holds the key. The value is
/// read as QSettings reads it, but from its own line alone: an open quote or a back-slash at the
/// end of a line reaches no further, and a comma makes no list.
QString IniValue(const QByteArray& content, const IniKey& key);

/// The content with the value at the key: on the line that holds the key, or on a new line at the
/// end of the key's section. Every other byte stays, and so does a line that has the value already.
/// QSettings reads the same value from that line. So do plainer readers such as the frp client,
/// unless the value has double quotes, back-slashes or characters beyond ASCII.
QByteArray IniWithValue(const QByteArray& content, const IniKey& key, const QString& value);
