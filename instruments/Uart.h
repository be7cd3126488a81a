#pragma once

class QByteArray;
class QSerialPort;
class QString;

/// Opens a UART of the board for reading and writing, at 115200 8N1 without flow control, and
/// clears its buffers in both directions. False when the device cannot be opened.
///
/// If the device vanishes later, the port is closed. The port object stays; its owner can close and
/// open it as usual. If another program reads the same device, the port receives what that program
/// leaves.
bool OpenUart(QSerialPort* port, const QString& device);

/// Takes what a port has received. readAll() would reserve 16 kB for every few bytes.
QByteArray ReadUart(QSerialPort* port);

/// Closes and deletes a port, and sets the pointer to null. A null pointer stays as it is.
void CloseUart(QSerialPort*& port);
