// Feeds the functions for the supplicant's client with inputs from libFuzzer. The same bytes serve
// as a status, as a network of the scan and as a passphrase.

#include "protocols/Supplicant.h"

#include "tests/fuzz/Require.h"

namespace
{

/// A name as the client prints it: every byte as an escape.
QByteArray Printed(const QByteArray& ssid)
{
    QByteArray printed;
    for (const char byte : ssid) {
        printed += "\\x" + QByteArray(1, byte).toHex();
    }
    return printed;
}

/// What a shell reads from a word of single-quoted parts and escaped quotes.
QByteArray Unquoted(const QByteArray& word)
{
    QByteArray text;
    bool inQuotes = false;
    for (int i = 0; i < word.size(); ++i) {
        if (word[i] == '\'') {
            inQuotes = !inQuotes;
        } else if (!inQuotes && word[i] == '\\') {
            text += word[++i];
        } else {
            Require(inQuotes, "nothing stands outside the quotes");
            text += word[i];
        }
    }
    Require(!inQuotes, "the quotes are closed");
    return text;
}

void FuzzName(const QByteArray& bytes)
{
    if (!bytes.contains('\0')) {
        Require(SsidBytes(Printed(bytes)) == bytes, "a name comes back as it was");
    }
    const QString shown = ReadableName(Printed(bytes));
    for (const QChar character : shown) {
        Require(character.isPrint() || character.isSurrogate(), "what is shown can be seen");
    }
    ShownNetwork(QString::fromUtf8(bytes));
}

void FuzzCommand(const QByteArray& value)
{
    const auto line = SetNetworkCommand("psk", value);
    if (!line) {
        return;
    }
    const QByteArray start = "wpa_cli -i wlan0 set_network 0 psk ";
    Require(line->startsWith(start), "the command is the client's");
    Require(Unquoted(line->mid(start.size())) == '"' + value + '"', "the value reaches the client");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size)
{
    const QByteArray input(reinterpret_cast<const char*>(bytes), static_cast<int>(size));
    const auto link = ReadLinkStatus(input);
    Require(!link || !link->isConnected || input.contains("COMPLETED"), "joined is told so");
    FuzzName(input);
    FuzzCommand(input);
    return 0;
}
