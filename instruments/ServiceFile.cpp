#include "instruments/ServiceFile.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <sys/stat.h>
#include <unistd.h>

namespace
{

/// Far more than a settings file has. A larger file would only use up the board's memory.
const qint64 mostBytes = 16000000;

/// Reads a file. A missing file is empty. False when the file cannot be read.
bool Read(const QString& path, QByteArray* content)
{
    const QFileInfo info(path);
    if (!info.exists()) {
        return true;
    }
    // A pipe or a device instead of a file could be read for ever.
    if (!info.isFile() || info.size() > mostBytes) {
        qWarning() << "Cannot read" << path << (info.isFile() ? "too large" : "not a file");
        return false;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qWarning() << "Cannot read" << path << file.errorString();
        return false;
    }
    *content = file.readAll();
    return true;
}

void Replace(const QString& path, const QByteArray& content)
{
    // QSaveFile writes a new file beside the old one, synchronises it and renames it. It follows a
    // symbolic link to its target. In a folder that takes no new file nothing is written: writing
    // over the old file could leave half a file.
    QSaveFile file(path);
    struct stat old = {};
    const bool isThere = stat(QFile::encodeName(path).constData(), &old) == 0;
    if (!file.open(QIODevice::WriteOnly)) {
        qWarning() << path << file.errorString();
        return;
    }
    if (isThere && (fchown(file.handle(), old.st_uid, old.st_gid) != 0 ||
                    fchmod(file.handle(), old.st_mode & 07777) != 0)) {
        qErrnoWarning("Cannot keep the owner of %s", qPrintable(path));
    }
    // commit() alone would not notice that there was no space for the last bytes.
    if (file.write(content) != content.size() || !file.flush() || !file.commit()) {
        qWarning() << path << file.errorString();
    }
}

} // namespace

QByteArray ReadServiceFile(const QString& path)
{
    QByteArray content;
    Read(path, &content);
    return content;
}

void EditServiceFile(const QString& path,
                     const std::function<QByteArray(const QByteArray& content)>& edit)
{
    QByteArray old;
    if (!Read(path, &old)) {
        return;
    }
    const QByteArray content = edit(old);
    if (content != old) {
        Replace(path, content);
    }
}
