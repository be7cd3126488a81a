#pragma once

#include <QByteArrayList>
#include <QElapsedTimer>
#include <QMap>

/// The board's supplicant, with the answers of wpa_supplicant 2.10. It has no timers: each request
/// works out from the time passed what has happened to the networks.
class Supplicant
{
public:
    /// Answers a request of wpa_supplicant's control interface.
    QByteArray Answer(const QByteArray& request);

    /// Connects the far end of wlan0 while the board is joined to a network, and only then.
    void Settle();

    /// Whether a client has told it to end.
    bool IsTerminated() const { return m_isTerminated; }

private:
    /// The variables of a network, named as in the configuration file.
    using Network = QMap<QByteArray, QByteArray>;

    /// The state of the enabled network, and the status lines about the connection.
    struct Association {
        QByteArray state;
        QByteArray description;
    };
    Association Now() const;
    Association Join(int id, const Network& network) const;

    QByteArray Status();
    QByteArray Scan();
    QByteArray ScanResults();
    QByteArray AddNetwork();
    QByteArray RemoveNetworks();
    QByteArray SaveConfiguration();
    QByteArray Terminate();
    QByteArray AnswerAboutNetwork(const QByteArrayList& words);
    void TakeScanOver();

    QMap<int, Network> m_networks;
    QElapsedTimer m_enabled;
    QElapsedTimer m_scan;
    QByteArray m_results;
    bool m_isLetIn = false;
    bool m_isTerminated = false;
};
