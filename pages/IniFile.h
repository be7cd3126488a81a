#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

/// A key of an INI file and what it is to hold. Without a section it is a key of [General] or of
/// the lines before any section, which QSettings takes for the same.
struct IniEntry {
    QByteArray section;
    QByteArray key;
    QString value;
};

/// Writes the entries into the INI file of another service. Its other lines, comments and order
/// included, stay byte for byte, and whatever interrupts the writing leaves the old or the new
/// file. An entry that reads as wanted already is left as it is spelled. Failures are only logged.
void WriteIniFile(const QString& path, const QVector<IniEntry>& entries);

/// The content of an INI file with the entry in it, where it was or else at the end of its section.
QByteArray IniWithEntry(const QByteArray& content, const IniEntry& entry);

/// A value as it stands in an INI file: what QSettings reads as the same text. Where the text has
/// neither double quotes, back-slashes nor characters beyond ASCII, plainer readers such as the frp
/// client's agree.
QByteArray IniText(const QString& value);
