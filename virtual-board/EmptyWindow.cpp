// The least that a program with Qt can show: an empty window over the whole display.

#include <QApplication>
#include <QScreen>
#include <QWidget>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QWidget window(nullptr, Qt::FramelessWindowHint);
    window.resize(QGuiApplication::primaryScreen()->availableSize());
    window.show();
    return QApplication::exec();
}
