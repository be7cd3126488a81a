#pragma once

class QSerialPort;
class QString;

/// Opens a UART of the board for reading and writing, at 115200 8N1 without flow control, and
/// empties both of its directions. False when the device cannot be opened.
///
/// A port whose device vanishes while it is open is closed; its object stays with its owner, who
/// closes and opens it as any other. A port that another program reads as well goes on with what is
/// left to it.
bool OpenUart(QSerialPort* port, const QString& device);
