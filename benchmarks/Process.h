#pragma once

#include <QProcess>

/// A program that is measured from outside.
class Process
{
public:
    /// What it had spent when its first window stood on the screen.
    struct Start {
        double processorMs = 0;
        double elapsedMs = 0;
    };

    struct Memory {
        double residentMb = 0;
        /// Of pages shared with others its share only.
        double proportionalMb = 0;
    };

    /// Starts a file of the build, `plugin` loaded into it from `pluginPath` of the build.
    Process(const QString& program, const QStringList& arguments, const QString& plugin = QString(),
            const QString& pluginPath = QString());
    ~Process();

    /// Waits for the plug-in `first-frame` to tell. Ends this process where it does not.
    Start WaitForFirstFrame();

    /// Waits until it has done next to nothing for half a second.
    void WaitUntilIdle() const;

    /// Processor time of all its threads so far, in milliseconds.
    double ProcessorMs() const;

    Memory MemoryNow() const;

    /// The shared libraries and plug-ins that it has mapped, as paths.
    QStringList Libraries() const;

private:
    QByteArray Read(const QString& name) const;

    QProcess m_process;
    double m_startedMs = 0;
};
