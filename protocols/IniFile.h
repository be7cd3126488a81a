#pragma once

#include <QByteArray>
#include <QString>

/// A key of an INI file. Lines before the first header belong to the section General, as in
/// QSettings.
struct IniKey {
    QByteArray section;
    QByteArray name;
};

/// The value of the key in an INI file's content; empty when no line holds the key. The line is
/// found here; only the value follows QSettings' rules. So an open quote or a back-slash at the end
/// of a line does not continue on the next line. A comma does not make a list.
QString IniValue(const QByteArray& content, const IniKey& key);

/// The content with the key set to the value. The line that holds the key is changed. A missing key
/// gets a new line at the end of its section. All other bytes stay, and so does a line that already
/// has the value.
///
/// QSettings reads the same value from the written line. So do simpler readers such as the frp
/// client, unless the value has double quotes, back-slashes or characters beyond ASCII.
QByteArray IniWithValue(const QByteArray& content, const IniKey& key, const QString& value);
