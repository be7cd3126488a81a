#pragma once

#include <QTextDecoder>
#include <QWidget>

#include <memory>

class QComboBox;
class QLineEdit;
class QPushButton;
class QSerialPort;
class ReceiveView;

/// Opens one of the board's UARTs, sends lines on it and shows what comes back.
class SerialPortTester : public QWidget
{
    Q_OBJECT

public:
    explicit SerialPortTester(QWidget* parent);
    ~SerialPortTester() override;

private slots:
    void OnOpenCloseComPort(bool checked);
    void OnBtnSendClicked(bool checked);
    void OnSerialportRead();
    void OnSerialportWritten(qint64 count);

private:
    void Open();

    QComboBox* m_chooser = nullptr;
    QPushButton* m_openClose = nullptr;
    QLineEdit* m_sendText = nullptr;
    ReceiveView* m_received = nullptr;
    QSerialPort* m_port = nullptr; ///< null while closed
    std::unique_ptr<QTextDecoder> m_decoder;
};
