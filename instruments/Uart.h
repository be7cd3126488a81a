#pragma once

class QSerialPort;
class QString;

/// Opens a UART of the board for reading and writing, at 115200 8N1 without flow control, and
/// clears its buffers in both directions. False when the device cannot be opened.
///
/// If the device vanishes later, the port is closed. The port object stays; its owner can close and
/// open it as usual. If another program reads the same device, the port receives what that program
/// leaves.
bool OpenUart(QSerialPort* port, const QString& device);
