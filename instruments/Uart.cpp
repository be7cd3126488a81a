#include "instruments/Uart.h"

#include <QDebug>
#include <QSerialPort>

#include <poll.h>

namespace
{

/// Why a port cannot be read. A device that is gone reads as an end of file, which is no error to
/// the system: what the port reports then is the reason of some earlier call.
QString ReasonOf(const QSerialPort* port)
{
    pollfd state = {port->handle(), POLLIN, 0};
    const bool isGone = poll(&state, 1, 0) > 0 && (state.revents & (POLLHUP | POLLERR)) != 0;
    return isGone ? QString("hung up") : port->errorString();
}

/// Closes a port that can no longer be read. Left open it would report the same error without end.
void CloseVanishedPort(QSerialPort* port, const QString& device, QSerialPort::SerialPortError error)
{
    const bool vanished = error == QSerialPort::ReadError || error == QSerialPort::ResourceError;
    if (!vanished || !port->isOpen()) {
        return;
    }
    qDebug().noquote() << QString("Lost device:%1, %2").arg(device).arg(ReasonOf(port));
    port->close();
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
            CloseVanishedPort(port, device, error);
        },
        Qt::QueuedConnection);
    return true;
}
