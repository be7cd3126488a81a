#pragma once

#include <QWidget>

#include <linux/can.h>

class CanThread;
class QComboBox;
class QLineEdit;
class QPushButton;
class ReceiveView;

/// Opens the board's CAN interface, sends frames of eight bytes and shows the frames received.
class CanTester : public QWidget
{
    Q_OBJECT

public:
    explicit CanTester(QWidget* parent);
    ~CanTester() override;

    /// Opens a CAN interface and receives from it: "can1" when `which` is not 0, else "can0".
    void StartCan(int which);

    /// Stops receiving and closes the socket. A page opens the bus only once: after that its button
    /// stays on Open, and it sends nothing.
    void StopCan();

private slots:
    void OnOpenCloseCanPort(bool checked);
    void OnBtnSendClicked(bool checked);
    void OnMessage(QString text);

private:
    void StopReceiver();

    QComboBox* m_chooser = nullptr;
    QPushButton* m_openClose = nullptr;
    QLineEdit* m_sendText = nullptr;
    ReceiveView* m_received = nullptr;
    int m_socket = -1;
    bool m_isUsedUp = false; ///< whether the page's one opening of the bus is over
    CanThread* m_receiver = nullptr;
    sockaddr_can m_address = {};
};
