#include "simulated-board/tour/Processes.h"

#include <QByteArray>
#include <QDir>
#include <QFile>

namespace
{

/// Where the kernel lists the processes. The simulated board's own /proc has every number.
QString ProcessFolder()
{
    return QFile::exists("/run/proc/self") ? "/run/proc/" : "/proc/";
}

/// The words of a command as the kernel lists them.
QStringList WordsOf(const QByteArray& command)
{
    QStringList words;
    const QList<QByteArray> bytes = command.split('\0');
    for (const QByteArray& word : bytes) {
        words.append(QString::fromLocal8Bit(word));
    }
    words.removeLast(); // each word ends in a NUL
    return words;
}

} // namespace

QList<int> ProcessesOf(const QStringList& words)
{
    QList<int> processes;
    const QString folder = ProcessFolder();
    const QStringList names = QDir(folder).entryList(QDir::Dirs);
    for (const QString& name : names) {
        const int process = name.toInt();
        QFile file(folder + name + "/cmdline");
        if (process == 0 || !file.open(QIODevice::ReadOnly)) {
            continue;
        }
        // A process that ends meanwhile has no words any more.
        QStringList command = WordsOf(file.readAll());
        command = command.mid(qMax(0, command.size() - words.size()));
        if (!command.isEmpty()) {
            command[0] = command[0].section('/', -1);
        }
        if (command == words) {
            processes.append(process);
        }
    }
    return processes;
}
