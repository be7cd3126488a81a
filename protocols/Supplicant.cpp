#include "protocols/Supplicant.h"

#include <QVector>

#include <algorithm>
#include <utility>

namespace
{

/// An escape that wpa_cli prints: its length, and the byte that it stands for. The length is 0 when
/// wpa_cli prints no such escape.
struct Escape {
    char byte = '\0';
    int length = 0;
};

/// In bytes. A longer name or passphrase than fits is refused, not cut.
const int longestCommand = 99;

const std::pair<const char*, char> plainEscapes[] = {{"\\\"", '"'}, {"\\\\", '\\'}, {"\\e", '\033'},
                                                     {"\\n", '\n'}, {"\\r", '\r'},  {"\\t", '\t'}};

Escape ReadEscape(const QByteArray& text)
{
    if (text.startsWith("\\x")) {
        const QByteArray byte = QByteArray::fromHex(text.mid(2, 2));
        const bool isByte = byte.size() == 1 && byte.toHex() == text.mid(2);
        // A command line cannot contain a zero byte.
        return isByte && byte[0] != '\0' ? Escape{byte[0], 4} : Escape{};
    }
    for (const auto& [escape, byte] : plainEscapes) {
        if (text.startsWith(escape)) {
            return {byte, 2};
        }
    }
    return {};
}

bool IsSeenOnALine(uint character)
{
    const QChar::Category category = QChar::category(character);
    return QChar::isPrint(character) && category != QChar::Separator_Line &&
           category != QChar::Separator_Paragraph;
}

} // namespace

QByteArray SsidBytes(const QByteArray& printed)
{
    QByteArray ssid;
    for (int i = 0; i < printed.size();) {
        const Escape escape = ReadEscape(printed.mid(i, 4));
        ssid += escape.length > 0 ? escape.byte : printed[i];
        i += escape.length > 0 ? escape.length : 1;
    }
    return ssid;
}

QString ReadableName(const QByteArray& printed)
{
    const QByteArray ssid = SsidBytes(printed);
    const QString name = QString::fromUtf8(ssid);
    const QVector<uint> characters = name.toUcs4();
    const bool isReadable =
        name.toUtf8() == ssid && std::all_of(characters.begin(), characters.end(), IsSeenOnALine);
    return isReadable ? name : QString::fromUtf8(printed);
}

QString ShownNetwork(const QString& item)
{
    const QString printed = item.section(' ', 0, 0);
    const QString name = ReadableName(printed.toUtf8());
    if (name == printed) {
        return item;
    }
    // Keeps the signal to the right of a name that is written from right to left.
    const QChar leftToRightMark(0x200e);
    return name + leftToRightMark + item.mid(printed.size());
}

std::optional<QByteArray> SetNetworkCommand(const QByteArray& variable, QByteArray value)
{
    if (value.contains('\0')) {
        return std::nullopt;
    }
    value.replace("'", "'\\''");
    QByteArray command = "wpa_cli -i wlan0 set_network 0 " + variable + " '\"" + value + "\"'";
    return command.size() <= longestCommand ? std::make_optional(command) : std::nullopt;
}

std::optional<LinkStatus> ReadLinkStatus(const QByteArray& status)
{
    if (!status.contains("COMPLETED") || !status.contains("ip_address")) {
        return LinkStatus{};
    }
    const int name = status.indexOf("ssid=") + 5;
    const int end = name < 5 ? -1 : status.indexOf('\n', name);
    if (end < 0) {
        return std::nullopt;
    }
    return LinkStatus{true, ReadableName(status.mid(name, end - name))};
}
