#pragma once

#include <QByteArray>
#include <QString>

/// Puts a file of the board back as it was, when this object goes.
class KeptFile
{
public:
    explicit KeptFile(const QString& path);
    ~KeptFile();
    KeptFile(const KeptFile&) = delete;
    KeptFile& operator=(const KeptFile&) = delete;

    /// The content now; empty when there is no such file.
    QByteArray Content() const;

private:
    QString m_path;
    bool m_isThere = false;
    QByteArray m_content;
};
