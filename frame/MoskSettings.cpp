#include "frame/MoskSettings.h"

#include <QSettings>
#include <QVariant>

MoskSettings* MoskSettings::s_instance = nullptr;

MoskSettings* MoskSettings::GetInstance()
{
    if (s_instance == nullptr) {
        s_instance = new MoskSettings;
    }
    return s_instance;
}

MoskSettings::MoskSettings() : m_settings(new QSettings("/etc/mosk.ini", QSettings::IniFormat)) {}

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
