#pragma once

#include <QByteArray>
#include <QList>

/// A network that the board can receive, from the board's description.
struct Station {
    QByteArray name;
    QByteArray signal;
    QByteArray passphrase; ///< "-" for an open network
    bool isHidden = false;
    bool isSlow = false;

    bool IsOpen() const { return passphrase == "-"; }
};

/// The networks in the board's current description, in its order.
QList<Station> StationsInTheAir();

/// How long a scan takes now, in ms.
qint64 ScanTime();
