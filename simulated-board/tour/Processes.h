#pragma once

#include <QList>
#include <QStringList>

/// The numbers of the processes whose command ends in these words: the program, named without its
/// folder, and its arguments. A script's interpreter does not count.
QList<int> ProcessesOf(const QStringList& words);
