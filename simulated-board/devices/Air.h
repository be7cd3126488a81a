#pragma once

#include <QByteArray>
#include <QList>

/// A network in the air, as the board's description has it.
struct Station {
    QByteArray name;
    QByteArray signal;
    QByteArray passphrase; ///< "-" for an open network
    bool isHidden = false;
    bool isSlow = false;

    bool IsOpen() const { return passphrase == "-"; }
};

/// The networks in the air by now, in the order of the description.
QList<Station> StationsInTheAir();

/// How long a scan takes by now, in ms.
qint64 ScanTime();

/// A network's name as the supplicant prints it: what is not printable ASCII, quotes and
/// back-slashes as escapes.
QByteArray Printed(const QByteArray& name);
