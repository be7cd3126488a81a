#include "instruments/Uart.h"

#include <QDebug>
#include <QSerialPort>
#include <QSocketNotifier>
#include <QTimer>

#include <poll.h>

namespace
{

/// The pause after a read in milliseconds. At 115200 baud about two hundred bytes come in this
/// time; the system buffers up to four thousand.
const int pauseMs = 20;

/// Whether the device is gone, such as an adapter that was unplugged.
bool HasHungUp(const QSerialPort* port)
{
    pollfd state = {port->handle(), POLLIN, 0};
    return poll(&state, 1, 0) > 0 && (state.revents & (POLLHUP | POLLERR)) != 0;
}

/// Makes a port read again after the pause. A port that was made to wait, or met some errors, waits
/// until somebody asks it for data. peek() asks without taking any.
void ReadOnLater(QSerialPort* port)
{
    QTimer::singleShot(pauseMs, Qt::PreciseTimer, port, [port] {
        if (port->isOpen()) {
            port->peek(1);
        }
    });
}

/// Keeps a port from reading for a moment. It would read, and wake the program, for every few
/// bytes.
void Pause(QSerialPort* port)
{
    const auto notifiers = port->findChildren<QSocketNotifier*>();
    for (QSocketNotifier* notifier : notifiers) {
        if (notifier->type() == QSocketNotifier::Read) {
            notifier->setEnabled(false);
        }
    }
    ReadOnLater(port);
}

/// Closes a port whose device is gone; it would report the same error without end. If the device is
/// still there, another reader, such as a getty or a shell, was faster, and the port continues to
/// read. The port's error text then belongs to some earlier call.
void OnReadError(QSerialPort* port, const QString& device)
{
    if (!port->isOpen()) {
        return;
    }
    if (HasHungUp(port)) {
        qDebug().noquote() << QString("Lost device:%1, hung up").arg(device);
        port->close();
        return;
    }
    ReadOnLater(port);
}

} // namespace

bool OpenUart(QSerialPort* port, const QString& device)
{
    qDebug().noquote() << QString("Open device:%1").arg(device);
    port->setPortName(device);
    if (!port->open(QIODevice::ReadWrite)) {
        qDebug().noquote()
            << QString("Cannot open device:%1, %2").arg(device).arg(port->errorString());
        return false;
    }
    port->setBaudRate(115200, QSerialPort::AllDirections);
    port->setDataBits(QSerialPort::Data8);
    port->setParity(QSerialPort::NoParity);
    port->setStopBits(QSerialPort::OneStop);
    port->setFlowControl(QSerialPort::NoFlowControl);
    port->clear(QSerialPort::AllDirections);
    // Queued: the port reports the error while it is reading, and must not be closed during that.
    QObject::connect(
        port, &QSerialPort::errorOccurred, port,
        [port, device](QSerialPort::SerialPortError error) {
            if (error == QSerialPort::ReadError || error == QSerialPort::ResourceError) {
                OnReadError(port, device);
            }
        },
        Qt::QueuedConnection);
    return true;
}

QByteArray ReadUart(QSerialPort* port)
{
    const QByteArray received = port->readAll();
    Pause(port);
    return received;
}

void CloseUart(QSerialPort*& port)
{
    if (port == nullptr) {
        return;
    }
    port->disconnect();
    port->close();
    delete port;
    port = nullptr;
}
