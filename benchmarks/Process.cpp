#include "benchmarks/Process.h"

#include <QDir>
#include <QFile>
#include <QSet>
#include <QThread>

#include <ctime>

namespace
{

double SteadyMs()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

QString Built(const QString& path)
{
    return QString::fromLocal8Bit(qgetenv("BOARD_BUILD")) + '/' + path;
}

} // namespace

Process::Process(const QString& program, const QStringList& arguments, const QString& plugin,
                 const QString& pluginPath)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    if (!plugin.isEmpty()) {
        environment.insert("QT_QPA_GENERIC_PLUGINS", plugin);
        environment.insert("QT_PLUGIN_PATH", Built(pluginPath));
    }
    m_process.setProcessEnvironment(environment);
    m_startedMs = SteadyMs();
    m_process.start(Built(program), arguments);
    if (!m_process.waitForStarted()) {
        qFatal("%s: %s", qPrintable(program), qPrintable(m_process.errorString()));
    }
}

Process::~Process()
{
    m_process.kill();
    m_process.waitForFinished();
}

Process::Start Process::WaitForFirstFrame()
{
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead()) {
            qFatal("No first frame: %s", m_process.readAllStandardError().constData());
        }
    }
    const QList<QByteArray> times = m_process.readLine().simplified().split(' ');
    return {times.value(0).toDouble(), times.value(1).toDouble() - m_startedMs};
}

void Process::WaitUntilIdle() const
{
    const double blinkOfACursor = 3;
    double before = 0;
    double now = ProcessorMs();
    do {
        QThread::msleep(500);
        before = now;
        now = ProcessorMs();
    } while (now > before + blinkOfACursor);
}

double Process::ProcessorMs() const
{
    double nanoseconds = 0;
    const QDir tasks(QString("/proc/%1/task").arg(m_process.processId()));
    const QStringList names = tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& task : names) {
        nanoseconds += Read("task/" + task + "/schedstat").split(' ').value(0).toDouble();
    }
    return nanoseconds / 1e6;
}

Process::Memory Process::MemoryNow() const
{
    Memory memory;
    const QList<QByteArray> lines = Read("smaps_rollup").split('\n');
    for (const QByteArray& line : lines) {
        const double megabytes = line.simplified().split(' ').value(1).toDouble() / 1024;
        if (line.startsWith("Rss:")) {
            memory.residentMb = megabytes;
        } else if (line.startsWith("Pss:")) {
            memory.proportionalMb = megabytes;
        }
    }
    return memory;
}

QStringList Process::Libraries() const
{
    QSet<QString> libraries;
    const QList<QByteArray> lines = Read("maps").split('\n');
    for (const QByteArray& line : lines) {
        const QString path = QString(line).section(' ', 5).trimmed();
        if (path.contains(".so")) {
            libraries.insert(path);
        }
    }
    return libraries.values();
}

QByteArray Process::Read(const QString& name) const
{
    QFile file(QString("/proc/%1/%2").arg(m_process.processId()).arg(name));
    if (!file.open(QIODevice::ReadOnly)) {
        qFatal("%s: the program has ended", qPrintable(file.fileName()));
    }
    return file.readAll();
}
