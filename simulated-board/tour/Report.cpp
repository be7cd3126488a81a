#include "simulated-board/tour/Report.h"

#include <QDir>
#include <QSaveFile>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace
{

/// Replaces a file with the bytes. They are on the disk before the file gets its name.
bool Replace(const QString& path, const QByteArray& bytes, QString* error)
{
    QSaveFile file(path);
    const bool isWritten = file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() &&
                           file.flush() && fsync(file.handle()) == 0 && file.commit();
    if (!isWritten) {
        *error = QString("cannot write %1: %2")
                     .arg(path, file.error() == QFileDevice::NoError ? std::strerror(errno)
                                                                     : file.errorString());
    }
    return isWritten;
}

/// Has the names of a folder's files written to the disk.
bool SyncFolder(const QString& path, QString* error)
{
    const int folder = open(path.toLocal8Bit().constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    // Some file systems cannot do this with a folder, and say so with EINVAL.
    const bool isSynced = folder >= 0 && (fsync(folder) == 0 || errno == EINVAL);
    if (!isSynced) {
        *error = QString("cannot write %1: %2").arg(path, std::strerror(errno));
    }
    if (folder >= 0) {
        close(folder);
    }
    return isSynced;
}

/// Whether XML takes the character, which is no surrogate.
bool IsXml(QChar character)
{
    const ushort code = character.unicode();
    return code == '\t' || code == '\n' ||
           (code >= ' ' && code != 0x7f && code < 0xfffe && !(code >= 0x80 && code < 0xa0));
}

} // namespace

int Report::Count(Verdict verdict) const
{
    return static_cast<int>(
        std::count_if(checks.begin(), checks.end(),
                      [verdict](const Check& check) { return check.verdict == verdict; }));
}

bool Report::Write(const QString& folder, QString* error) const
{
    if (!QDir().mkpath(folder)) {
        *error = QString("cannot make the folder %1").arg(folder);
        return false;
    }
    return Replace(folder + "/report.html", HtmlOf(*this), error) &&
           Replace(folder + "/report.xml", JUnitOf(*this), error) && SyncFolder(folder, error);
}

QString Visible(const QString& text)
{
    const QChar replacement(QChar::ReplacementCharacter);
    QString visible;
    for (int i = 0; i < text.size(); ++i) {
        const QChar character = text[i];
        if (character.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            visible += text.midRef(i++, 2);
        } else if (!character.isSurrogate() && IsXml(character)) {
            visible += character;
        } else if (character.unicode() < ' ') {
            // U+2400 and those that follow are pictures of the control characters.
            visible += QChar(0x2400 + character.unicode());
        } else {
            visible += replacement;
        }
    }
    return visible;
}
