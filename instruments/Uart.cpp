#include "instruments/Uart.h"

#include <QDebug>
#include <QSerialPort>
#include <QTimer>

#include <poll.h>

namespace
{

/// How long a port's reading rests after a read that brought nothing, in milliseconds. At 115200
/// baud the system gathers some hundred bytes meanwhile, of the four thousand that it can.
const int pauseMs = 10;

/// Whether the device itself is gone, such as an adapter that was unplugged.
bool HasHungUp(const QSerialPort* port)
{
    pollfd state = {port->handle(), POLLIN, 0};
    return poll(&state, 1, 0) > 0 && (state.revents & (POLLHUP | POLLERR)) != 0;
}

/// Has a port read on. After some errors it stops until it is asked for data again. To peek takes
/// nothing from it.
void ReadOn(QSerialPort* port)
{
    if (port->isOpen()) {
        port->peek(1);
    }
}

/// Closes a port whose device is gone; left open it would report the same error without end. A
/// device that is there and gave nothing is read on: a getty or a shell that reads it as well was
/// faster. What the port calls the reason is then that of some earlier call.
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
    QTimer::singleShot(pauseMs, port, [port] { ReadOn(port); });
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
    // Queued: the error is reported from within the port's own reading, which must not lose its
    // device under its feet.
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
