#include "instruments/Uart.h"

#include <QDebug>
#include <QSerialPort>

namespace
{

/// Closes a port that can no longer be read. Left open it would report the same error without end.
void CloseVanishedPort(QSerialPort* port, QSerialPort::SerialPortError error)
{
    const bool vanished = error == QSerialPort::ReadError || error == QSerialPort::ResourceError;
    if (!vanished || !port->isOpen()) {
        return;
    }
    qDebug().noquote() << "Lost device:" + port->portName() << port->errorString();
    port->close();
}

} // namespace

bool OpenUart(QSerialPort* port, const QString& device)
{
    qDebug().noquote() << QString("Open device:%1").arg(device);
    port->setPortName(device);
    if (!port->open(QIODevice::ReadWrite)) {
        qDebug().noquote() << "Cannot open device:" + device << port->errorString();
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
        [port](QSerialPort::SerialPortError error) { CloseVanishedPort(port, error); },
        Qt::QueuedConnection);
    return true;
}
