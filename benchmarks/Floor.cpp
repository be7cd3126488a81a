// The least that a program like this can be: an empty window with the program's look, a field with
// Chinese text and the same on-screen keyboard. Given a device, it reads that and shows nothing.
//
//   Floor STYLE-SHEET [DEVICE]

#include <QApplication>
#include <QFile>
#include <QLineEdit>
#include <QScreen>
#include <QSocketNotifier>

#include <fcntl.h>
#include <unistd.h>

int main(int argc, char** argv)
{
    qputenv("QT_IM_MODULE", "qtvirtualkeyboard");
    qputenv("QT_VIRTUALKEYBOARD_DESKTOP_DISABLE", "1");
    QApplication application(argc, argv);
    QFile style(QString::fromLocal8Bit(argv[1]));
    if (!style.open(QIODevice::ReadOnly)) {
        return 1;
    }
    application.setStyleSheet(QString::fromLatin1(style.readAll()));

    QWidget window(nullptr, Qt::FramelessWindowHint);
    window.resize(QGuiApplication::primaryScreen()->availableSize());
    auto* field = new QLineEdit(QString::fromUtf8("首页"), &window);
    field->setGeometry(40, 40, 400, 40);

    if (argc > 2) {
        const int port = open(argv[2], O_RDWR | O_NONBLOCK | O_NOCTTY);
        auto* ready = new QSocketNotifier(port, QSocketNotifier::Read, &window);
        QObject::connect(ready, &QSocketNotifier::activated, [port] {
            char buffer[4096];
            while (read(port, buffer, sizeof buffer) > 0) {
            }
        });
    }
    window.show();
    return QApplication::exec();
}
