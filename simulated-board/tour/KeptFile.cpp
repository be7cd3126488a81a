#include "simulated-board/tour/KeptFile.h"

#include <QFile>
#include <QSaveFile>

KeptFile::KeptFile(const QString& path)
    : m_path(path), m_isThere(QFile::exists(path)), m_content(Content())
{
}

KeptFile::~KeptFile()
{
    if (!m_isThere) {
        QFile::remove(m_path);
        return;
    }
    if (Content() == m_content) {
        return;
    }
    // It keeps the permissions of the file that it replaces.
    QSaveFile file(m_path);
    if (!file.open(QIODevice::WriteOnly) || file.write(m_content) != m_content.size() ||
        !file.commit()) {
        qWarning("Cannot put %s back: %s", qPrintable(m_path), qPrintable(file.errorString()));
    }
}

QByteArray KeptFile::Content() const
{
    QFile file(m_path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
