#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

/// What a board is like, as its description says (docs/simulated-board.md).
struct BoardDescription {
    struct Stick {
        QString vendor;
        QString model;
    };
    struct Link {
        QString address;
        QString far; ///< answers behind the interface
    };
    struct Network {
        QByteArray name;
        QString signal;     ///< in dBm; empty when it is not known, as with a real radio
        QString passphrase; ///< empty for an open network
        bool isHidden = false;
        bool isSlow = false;
        QString far; ///< answers behind the network; empty when nothing is known to
    };
    struct Camera {
        QString device;
        QString colour; ///< "#2060c0", "busy" or "any"
        QString name;
    };
    struct Port {
        QString name; ///< without "/dev/"
        QString role;
        QStringList arguments;
    };
    struct Sound {
        QString path; ///< below /mnt
        int seconds = 0;
    };

    QString title; ///< the first line, if it is a comment
    QString language;
    QString version;
    QList<Stick> sticks;
    bool hasUsbStorage = false; ///< the driver is there even without a stick
    QList<int> mmc;
    QMap<QString, Link> links;         ///< by interface
    QMap<QString, QString> hosts;      ///< addresses by name
    QMap<QString, QStringList> silent; ///< addresses by interface
    QStringList buses;                 ///< CAN interfaces on which a partner sends
    bool isWlanUp = false;
    QList<Network> networks;
    double scanSeconds = 1;
    QList<Port> ports;
    QList<Sound> sounds;
    QList<Camera> cameras;
    QMap<QString, QByteArray> files;

    /// Whether an address answers behind an interface.
    bool Answers(const QString& interface, const QString& address) const;

    /// The role of a serial port; empty when the board does not have the port.
    QString RoleOf(const QString& port) const;
};

/// Reads a description. On failure returns nothing, and `error` says where and what, on one line.
std::optional<BoardDescription> ReadBoardDescription(const QString& path, QString* error);

/// Where the simulated board keeps its own description.
inline const char* const ownDescriptionPath = "/run/board/description";

/// The current description of the simulated board that this process runs on. Empty if it has none.
BoardDescription OwnDescription();
