#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// The input and output of `wpa_cli`, the client of wpa_supplicant. It prints the bytes of a
// network's name with escapes (printf_encode() in wpa_supplicant: \", \\, \e, \n, \r, \t, \xHH),
// but takes a name between double quotes literally.

/// The bytes of a network's name that the client printed.
QByteArray SsidBytes(const QByteArray& printed);

/// A network's name as readable text. The name stays as the client printed it when it is not UTF-8
/// or has characters that cannot be seen on a line.
QString ReadableName(const QByteArray& printed);

/// The text that a list shows for a network. `item` is the printed name, a blank and the signal.
QString ShownNetwork(const QString& item);

/// The command that sets a variable of network 0 to a value in double quotes. Nothing when it would
/// be longer than 99 bytes or the value has a zero byte. The value may come from a foreign network.
/// It is in the shell's single quotes, so that nothing in it is run.
std::optional<QByteArray> SetNetworkCommand(const QByteArray& variable, QByteArray value);

/// Whether the board is joined to a network and has an address there.
struct LinkStatus {
    bool isConnected = false;
    QString network; ///< its readable name
};

/// Reads the output of `wpa_cli status`. Nothing when the board is connected but the line with the
/// network's name is missing or cut off.
std::optional<LinkStatus> ReadLinkStatus(const QByteArray& status);
