#include "instruments/ServiceFile.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <sys/stat.h>
#include <unistd.h>

namespace
{

/// Far more than any settings: a larger file would only use up the board's memory.
const qint64 mostBytes = 16000000;

/// Reads a file; a missing one is empty. False when what stands there cannot be read.
bool Read(const QString& path, QByteArray* content)
{
    const QFileInfo info(path);
    if (!info.exists()) {
        return true;
    }
    // Reading a pipe or a device in the file's place would never end.
    QFile file(path);
    if (!info.isFile() || info.size() > mostBytes || !file.open(QIODevice::ReadOnly)) {
        qWarning() << "Cannot read" << path << file.errorString();
        return false;
    }
    *content = file.readAll();
    return true;
}

void Replace(const QString& path, const QByteArray& content)
{
    // Writes beside the file, synchronises and renames; through a symbolic link to its target. With
    // a folder that takes no new file nothing is written: in place it could end as half a file.
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
    // commit() alone would not notice that the last bytes found no room.
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
