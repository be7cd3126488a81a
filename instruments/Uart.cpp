#include "instruments/Uart.h"

#include <QDebug>
#include <QSerialPort>
#include <QTimer>

#include <poll.h>

namespace
{

/// Whether the device is gone, such as an adapter that was unplugged.
bool HasHungUp(const QSerialPort* port)
{
    pollfd state = {port->handle(), POLLIN, 0};
    return poll(&state, 1, 0) > 0 && (state.revents & (POLLHUP | POLLERR)) != 0;
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
    // After some errors a port waits until somebody asks it for data. peek() asks without taking
    // any. Not at once: where reading fails for good, that would not end.
    QTimer::singleShot(20, port, [port] {
        if (port->isOpen()) {
            port->peek(1);
        }
    });
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
    return port->read(port->bytesAvailable());
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
