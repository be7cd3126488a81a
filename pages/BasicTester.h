#pragma once

#include <QWidget>

class QComboBox;
class QDateTime;
class QLineEdit;

/// The board's quick checks, one row each. Each row shows its own result.
class BasicTester : public QWidget
{
    Q_OBJECT

public:
    explicit BasicTester(QWidget* parent);

    /// Selects the rotation that the touch screen's calibration file records.
    void InitCurrentRotate();

    /// Sets the controller's clock and the system's clock. If the time is invalid or the controller
    /// cannot be reached, both stay as they are. "Ty" in the name is a misspelt "by".
    void SetTimeTyUart(const QDateTime& dt);

private slots:
    void OnBtnUSBTestClicked(bool checked);
    void OnBtnSDCardTestClicked(bool checked);
    void OnBtnTouchCalcClicked(bool checked);
    void OnBtnBeepTestClicked(bool checked);
    void OnBtnTouchTestClicked(bool checked);
    void OnBtnEmmcTestClicked(bool checked);
    void OnBtnDdrTestClicked(bool checked);
    void OnBtnNetTestClicked(bool checked);
    void OnBtnGetRTCTestClicked(bool checked);
    void OnBtnSetRTCTestClicked(bool checked);
    void OnBtn4gTestClicked(bool checked);

private:
    void Ping(QLineEdit* line, const QString& command);

    QComboBox* m_rotation = nullptr;
    QLineEdit* m_usb = nullptr;
    QLineEdit* m_sdCard = nullptr;
    QLineEdit* m_buzzer = nullptr;
    QLineEdit* m_ethernet = nullptr;
    QLineEdit* m_clockRead = nullptr;
    QLineEdit* m_clockSet = nullptr;
    QLineEdit* m_mobile = nullptr;
    /// 0 while the buzzer is off, as far as this page has switched it; else 1000.
    int m_beep = 0;
};
