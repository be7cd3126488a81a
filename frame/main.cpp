#include "frame/BodyWidget.h"
#include "frame/Look.h"
#include "frame/MoskTester.h"
#include "frame/StopSignals.h"
#include "texts/MoskTranslator.h"

#include <QApplication>
#include <QPixmap>

#include <csignal>

namespace
{

/// Reads the logo for the style sheet, which finds it in QPixmapCache as long as this copy lives.
///
/// Before Qt reads a PNG itself it loads every picture plug-in, and Qt Svg with them. Without paths
/// to look for plug-ins it finds none.
QPixmap LoadLogo()
{
    const QStringList paths = QCoreApplication::libraryPaths();
    QCoreApplication::setLibraryPaths({});
    const QPixmap logo(":/images/logo.png");
    QCoreApplication::setLibraryPaths(paths);
    return logo;
}

} // namespace

int main(int argc, char** argv)
{
    // The log's reader may end before the program. Commands that it starts get the default action
    // back: from QProcess, and from RunShell() and ReadShell().
    std::signal(SIGPIPE, SIG_IGN);

    // Both before the application exists, which picks its input method once. The keys are shown in
    // the main window (KeyboardPanel), not in a full-screen window of the input method's own.
    qputenv("QT_IM_MODULE", "qtvirtualkeyboard");
    qputenv("QT_VIRTUALKEYBOARD_DESKTOP_DISABLE", "1");
    QApplication application(argc, argv);
    const StopSignals stopSignals;

    const QPixmap logo = LoadLogo(); // clazy:exclude=unused-non-trivial-variable
    ApplyLook();
    MoskTranslator::GetTranslator();

    g_mainwnd = new MoskTester(nullptr);
    g_mainwnd->show();
    const int status = QApplication::exec();
    // The page's ports, player and threads end with it, whatever list is open on it; the window
    // lasts as long as the process.
    delete g_mainwnd->GetBody();
    return status;
}
