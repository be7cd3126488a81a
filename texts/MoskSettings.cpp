#include "texts/MoskSettings.h"

#include <QDebug>
#include <QFileInfo>
#include <QLockFile>
#include <QSaveFile>
#include <QSettings>
#include <QVariant>

namespace
{

const char* const path = "/etc/mosk.ini";

/// No file can be here: QSettings keeps the values in memory.
const char* const nowhere = "/dev/null/mosk.ini";

/// Whether QSettings can open the path. It would wait for ever for a pipe, and read a device
/// without end.
bool IsFileOrMissing()
{
    const QFileInfo info(path);
    return info.isFile() || !info.exists();
}

/// The reason why the file cannot be written; empty if it can. QSettings tells neither the reason
/// nor whether its last writing went well: it keeps its first error.
QString WriteError()
{
    if (!IsFileOrMissing()) {
        return "not a file";
    }
    // Without a commit() this leaves nothing behind.
    QSaveFile trial(path);
    if (trial.open(QIODevice::WriteOnly) && trial.write("\n") == 1 && trial.flush()) {
        return {};
    }
    return trial.errorString();
}

} // namespace

MoskSettings* MoskSettings::s_instance = nullptr;

MoskSettings* MoskSettings::GetInstance()
{
    if (s_instance == nullptr) {
        s_instance = new MoskSettings;
    }
    return s_instance;
}

MoskSettings::MoskSettings()
    : m_settings(new QSettings(IsFileOrMissing() ? path : nowhere, QSettings::IniFormat))
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
    // QSettings writes the file in the next turn of the event loop. This call comes after it.
    QMetaObject::invokeMethod(m_settings, [this] { LogFailure(); }, Qt::QueuedConnection);
}

void MoskSettings::LogFailure() const
{
    const QString error = m_settings->fileName() == path ? WriteError() : "not a file";
    if (!error.isEmpty()) {
        qWarning() << "Cannot write" << path << error;
    }
}
