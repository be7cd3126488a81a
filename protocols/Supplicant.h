#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// What `wpa_cli`, the client of wpa_supplicant, prints and takes. It prints the bytes of a
// network's name with escapes (printf_encode() in wpa_supplicant: \", \\, \e, \n, \r, \t, \xHH),
// but takes what stands between double quotes as it is.

/// The bytes of a network's name as the client prints it.
QByteArray SsidBytes(const QByteArray& printed);

/// A network's name as people read it. A name that is no text, or has in it what cannot be seen on
/// a line, is left as the client prints it.
QString ReadableName(const QByteArray& printed);

/// What a list shows of a network, of which `item` is the printed name, a blank and the signal.
QString ShownNetwork(const QString& item);

/// Composes the command that sets a variable of network 0 to a value in double quotes; false when
/// it does not fit. The value comes from the air or the keyboard: between the shell's single quotes
/// nothing of it is run.
bool ComposeSetNetwork(char (&command)[100], const char* variable, QByteArray value);

/// Whether the board is joined to a network and has an address there.
struct LinkStatus {
    bool isConnected = false;
    QString network; ///< its name as people read it
};

/// Reads the lines of `wpa_cli status`. Nothing when a connection's network cannot be told.
std::optional<LinkStatus> ReadLinkStatus(const QByteArray& status);
