#include "simulated-board/BoardDescription.h"

#include "simulated-board/Escapes.h"
#include "simulated-board/devices/PortRole.h"

#include <QFile>
#include <QRegularExpression>

#include <stdexcept>

#include <sys/stat.h>

namespace
{

/// Why a line is refused, on one line.
using Refusal = std::invalid_argument;

[[noreturn]] void Refuse(const QString& reason)
{
    throw Refusal(reason.toStdString());
}

void Require(bool isRight, const QString& reason)
{
    if (!isRight) {
        Refuse(reason);
    }
}

bool Matches(const QString& text, const char* pattern)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(text).hasMatch();
}

QString Address(const QString& text)
{
    const QString byte = "(25[0-5]|2[0-4][0-9]|1?[0-9]?[0-9])";
    Require(Matches(text, qPrintable(QString("(%1\\.){3}%1").arg(byte))),
            QString("\"%1\" is no address: it takes four numbers, such as 192.168.10.1").arg(text));
    return text;
}

QString Interface(const QString& text)
{
    Require(QStringList{"eth0", "usb0", "wlan0"}.contains(text),
            QString("\"%1\" is no interface: it takes eth0, usb0 or wlan0").arg(text));
    return text;
}

int Number(const QString& text, int largest)
{
    Require(Matches(text, "[0-9]{1,6}") && text.toInt() <= largest,
            QString("\"%1\" is no number from 0 to %2").arg(text).arg(largest));
    return text.toInt();
}

/// The first line of a file that holds a secret. Nobody but its owner and root may read it.
QString SecretIn(const QString& path)
{
    QFile file(path);
    Require(file.open(QIODevice::ReadOnly),
            QString("cannot read %1: %2").arg(path, file.errorString()));
    struct stat state = {};
    Require(fstat(file.handle(), &state) == 0 && (state.st_mode & (S_IRWXG | S_IRWXO)) == 0 &&
                state.st_uid == 0,
            QString("others than root can read %1: chown root %1; chmod 600 %1").arg(path));
    const QString secret = QString::fromUtf8(file.readLine(1000)).section('\n', 0, 0);
    Require(!secret.isEmpty(), QString("%1 is empty").arg(path));
    return secret;
}

void ReadNetwork(BoardDescription& board, const QStringList& words)
{
    BoardDescription::Network network;
    network.name = Unescaped(words[1].toUtf8());
    Require(words[2] == "-" || Matches(words[2], "-?[0-9]{1,3}"),
            QString("\"%1\" is no signal: it takes a number of dBm, or - if it is not known")
                .arg(words[2]));
    network.signal = words[2] == "-" ? QString() : words[2];
    if (words[3].startsWith('@')) {
        network.passphrase = SecretIn(words[3].mid(1));
    } else if (words[3] != "-") {
        network.passphrase = QString::fromUtf8(Unescaped(words[3].toUtf8()));
    }
    for (int i = 4; i < words.size(); ++i) {
        if (words[i] == "hidden") {
            network.isHidden = true;
        } else if (words[i] == "slow") {
            network.isSlow = true;
        } else if (words[i] == "far" && i + 1 < words.size()) {
            network.far = Address(words[++i]);
        } else {
            Refuse(
                QString("\"%1\" is unknown: it takes hidden, slow or far ADDRESS").arg(words[i]));
        }
    }
    board.networks.append(network);
}

void ReadPort(BoardDescription& board, const QStringList& words)
{
    Require(!words[1].contains('/'), "a port is named without /dev/");
    // There is such a role when it can be made.
    std::vector<std::string> arguments;
    for (const QString& word : words.mid(3)) {
        arguments.push_back(word.toStdString());
    }
    MakePortRole(words[2].toStdString(), arguments);
    Require(board.RoleOf(words[1]).isEmpty(), QString("%1 is there twice").arg(words[1]));
    board.ports.append({words[1], words[2], words.mid(3)});
}

void ReadCamera(BoardDescription& board, const QStringList& words)
{
    Require(
        Matches(words[2], "#[0-9a-f]{6}|busy|any"),
        QString("\"%1\" is no colour: it takes one such as #2060c0, any, or busy").arg(words[2]));
    board.cameras.append({words[1], words[2], words.mid(3).join(' ')});
}

/// A keyword, and how many arguments it takes.
struct Keyword {
    const char* name;
    int least;
    int most;
    void (*read)(BoardDescription& board, const QStringList& words);
};

const int any = 10000;

const Keyword keywords[] = {
    {"language", 1, 1,
     [](BoardDescription& board, const QStringList& words) {
         Require(words[1] == "english" || words[1] == "chinese",
                 QString("\"%1\" is no language: it takes english or chinese").arg(words[1]));
         board.language = words[1];
     }},
    {"version", 1, any,
     [](BoardDescription& board, const QStringList& words) {
         board.version = words.mid(1).join(' ');
     }},
    {"stick", 1, 2,
     [](BoardDescription& board, const QStringList& words) {
         board.sticks.append({words[1], words.value(2)});
     }},
    {"usb-storage", 0, 0,
     [](BoardDescription& board, const QStringList&) { board.hasUsbStorage = true; }},
    {"mmc", 1, 10,
     [](BoardDescription& board, const QStringList& words) {
         for (int i = 1; i < words.size(); ++i) {
             board.mmc.append(Number(words[i], 9));
         }
     }},
    {"link", 3, 3,
     [](BoardDescription& board, const QStringList& words) {
         board.links[Interface(words[1])] = {Address(words[2]), Address(words[3])};
     }},
    {"host", 2, 2,
     [](BoardDescription& board, const QStringList& words) {
         board.hosts[words[1]] = Address(words[2]);
     }},
    {"silent", 2, 2,
     [](BoardDescription& board, const QStringList& words) {
         board.silent[Interface(words[1])].append(Address(words[2]));
     }},
    {"wlan0", 1, 1,
     [](BoardDescription& board, const QStringList& words) {
         Require(words[1] == "up" || words[1] == "down", "wlan0 takes up or down");
         board.isWlanUp = words[1] == "up";
     }},
    {"bus", 1, 1,
     [](BoardDescription& board, const QStringList& words) { board.buses.append(words[1]); }},
    {"network", 3, 7, ReadNetwork},
    {"scan-time", 1, 1,
     [](BoardDescription& board, const QStringList& words) {
         Require(Matches(words[1], "[0-9]+(\\.[0-9]+)?"),
                 QString("\"%1\" is no number of seconds").arg(words[1]));
         board.scanSeconds = words[1].toDouble();
     }},
    {"port", 2, any, ReadPort},
    {"sound", 2, 2,
     [](BoardDescription& board, const QStringList& words) {
         board.sounds.append({words[1], Number(words[2], 3600)});
     }},
    {"camera", 3, any, ReadCamera},
    {"file", 1, any,
     [](BoardDescription& board, const QStringList& words) {
         Require(words[1].startsWith('/'), "a file is named from the root: /etc/...");
         board.files[words[1]] = Unescaped(words.mid(2).join(' ').toUtf8());
     }},
};

void ReadLine(BoardDescription& board, const QString& line)
{
    QStringList words = line.split(' ');
    words.removeAll("");
    if (words.isEmpty() || words[0].startsWith('#')) {
        return;
    }
    for (const Keyword& keyword : keywords) {
        if (words[0] == keyword.name) {
            const int count = words.size() - 1;
            Require(count >= keyword.least,
                    QString("%1 takes %2 arguments or more").arg(words[0]).arg(keyword.least));
            Require(count <= keyword.most,
                    QString("%1 takes %2 arguments at most").arg(words[0]).arg(keyword.most));
            keyword.read(board, words);
            return;
        }
    }
    Refuse(QString("\"%1\": no such keyword").arg(words[0]));
}

} // namespace

bool BoardDescription::Answers(const QString& interface, const QString& address) const
{
    return links.contains(interface) && links[interface].far == address &&
           !silent[interface].contains(address);
}

QString BoardDescription::RoleOf(const QString& port) const
{
    for (const Port& each : ports) {
        if (each.name == port) {
            return each.role;
        }
    }
    return {};
}

std::optional<BoardDescription> ReadBoardDescription(const QString& path, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QString("%1: %2").arg(path, file.errorString());
        return std::nullopt;
    }
    BoardDescription board;
    int number = 0;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).section('\n', 0, 0);
        ++number;
        if (number == 1 && line.startsWith('#')) {
            board.title = line.mid(1).trimmed();
        }
        try {
            ReadLine(board, line);
        } catch (const Refusal& refusal) {
            *error = QString("%1:%2: %3").arg(path).arg(number).arg(refusal.what());
            return std::nullopt;
        }
    }
    return board;
}

BoardDescription OwnDescription()
{
    QString error;
    return ReadBoardDescription(ownDescriptionPath, &error).value_or(BoardDescription());
}
