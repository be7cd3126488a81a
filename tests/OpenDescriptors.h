#pragma once

#include <QDir>

/// How many files, sockets and devices this process has open, to compare with another time's.
inline int OpenDescriptors()
{
    return QDir("/proc/self/fd").entryList(QDir::AllEntries | QDir::System).size();
}
