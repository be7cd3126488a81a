#include "frame/MoskSettings.h"

#include <QLockFile>
#include <QSettings>
#include <QVariant>

namespace
{

const char* const path = "/etc/mosk.ini";

} // namespace

MoskSettings* MoskSettings::s_instance = nullptr;

MoskSettings* MoskSettings::GetInstance()
{
    if (s_instance == nullptr) {
        s_instance = new MoskSettings;
    }
    return s_instance;
}

MoskSettings::MoskSettings() : m_settings(new QSettings(path, QSettings::IniFormat))
{
    // QSettings leaves its lock file behind if the program is killed or loses power while it
    // writes. That lock would block the next change for half a minute. The lock of a living process
    // is kept.
    QLockFile(QString(path) + ".lock").removeStaleLockFile();
}

QString MoskSettings::GetValue(const QString& key)
{
    m_settings->beginGroup("sys");
    const QString value = m_settings->value(key, QVariant()).toString();
    m_settings->endGroup();
    return value;
}

void MoskSettings::SetValue(const QString& key, const QString& value)
{
    m_settings->beginGroup("sys");
    m_settings->setValue(key, value);
    m_settings->endGroup();
}
