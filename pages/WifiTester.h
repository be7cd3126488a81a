#pragma once

#include <QWidget>

class QComboBox;
class QLineEdit;
class QPushButton;

/// The wireless interface wlan0. The page switches it on and off, joins a network through wpa_cli,
/// and tries the network with a ping.
class ToolWifiTest : public QWidget
{
    Q_OBJECT

public:
    explicit ToolWifiTest(QWidget* parent);

private slots:
    void OnBtnScanClicked(bool checked);
    void OnBtnConnectClicked(bool checked);
    void OnBtnSaveClicked(bool checked);
    void OnBtnPingClicked(bool checked);
    void OnBtnOpenClicked(bool checked);
    void OnBtnRefreshClicked(bool checked);

private:
    void OnLabelStatusRefreshed();
    bool IsWifiEnable();

    /// Read when the page opens. After that only the operator's switch changes it.
    bool m_isWifiEnabled = false;
    QLineEdit* m_lineStatus = nullptr;
    QPushButton* m_btnOpenWifi = nullptr;
    QComboBox* m_comboSsid = nullptr;
    QLineEdit* m_linePassword = nullptr;
    QLineEdit* m_linePingHost = nullptr;
    QLineEdit* m_lineResult = nullptr;
};
