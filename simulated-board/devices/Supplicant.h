#pragma once

#include <QByteArrayList>
#include <QElapsedTimer>
#include <QMap>

/// The board's supplicant, with the answers of wpa_supplicant 2.10. It does nothing by itself: its
/// state is what has become of its networks by the time that somebody asks.
class Supplicant
{
public:
    /// Answers a request of wpa_supplicant's control interface.
    QByteArray Answer(const QByteArray& request);

    /// Lets the far end hear the board while the board is joined, and only then.
    void Settle();

    /// Whether a client has ended it.
    bool IsTerminated() const { return m_isTerminated; }

private:
    /// The variables of a network, as the configuration file has them.
    using Network = QMap<QByteArray, QByteArray>;

    /// What has become of the network that is enabled, and the status lines of its station.
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
