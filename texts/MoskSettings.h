#pragma once

#include <QString>

class QSettings;

/// The program's own settings, kept in the group "sys" of /etc/mosk.ini. The one setting is
/// `Language`: "english" or "chinese".
class MoskSettings
{
public:
    static MoskSettings* GetInstance();

    /// The value of a key; empty when the key or the file is absent.
    QString GetValue(const QString& key);

    /// Stores a value. GetValue() returns it at once. The file is written when QSettings next
    /// flushes. If it cannot be written, this is logged, and the value lasts as long as the
    /// program.
    void SetValue(const QString& key, const QString& value);

private:
    Q_DISABLE_COPY(MoskSettings)

    MoskSettings();

    void LogFailure() const;

    QSettings* m_settings;

    static MoskSettings* s_instance;
};
