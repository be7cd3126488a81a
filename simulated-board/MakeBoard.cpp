// Makes the simulated board as the description on standard input says; nothing of the earlier one
// stays.

#include "simulated-board/Board.h"

#include <QFile>

#include <cstdio>
#include <cstdlib>

int main()
{
    // A refusal is one line, not a crash.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        std::fprintf(stderr, "%s\n", qPrintable(text));
        if (type == QtFatalMsg) {
            std::exit(1);
        }
    });
    QFile description;
    description.open(stdin, QIODevice::ReadOnly);
    Board::Become(description.readAll());
    return 0;
}
