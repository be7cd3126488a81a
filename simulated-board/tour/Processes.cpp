#include "simulated-board/tour/Processes.h"

#include <QByteArray>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace
{

/// Where the kernel lists the processes. The simulated board's own /proc has every number.
const char* ProcessFolder()
{
    return std::filesystem::exists("/run/proc/self") ? "/run/proc" : "/proc";
}

/// The words of a command as the kernel lists them.
QStringList WordsOf(const std::string& command)
{
    QStringList words;
    const QList<QByteArray> bytes = QByteArray::fromStdString(command).split('\0');
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
    for (const auto& entry : std::filesystem::directory_iterator(ProcessFolder())) {
        const int process = QString::fromStdString(entry.path().filename()).toInt();
        std::ifstream file(entry.path() / "cmdline");
        if (process == 0 || !file) {
            continue;
        }
        QStringList command =
            WordsOf({std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()});
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
