#pragma once

#include <QWidget>

class QCheckBox;
class QGridLayout;
class QLineEdit;

/// The settings of the board's VNC server and of the frp client that connects it to a relay. They
/// take effect when these services next read their files.
class ToolVncTest : public QWidget
{
    Q_OBJECT

public:
    explicit ToolVncTest(QWidget* parent);

private slots:
    void OnBtnSetClicked();

private:
    QCheckBox* AddBox(QGridLayout* layout, int row, const char* textKey);
    QLineEdit* AddField(QGridLayout* layout, int row, const char* titleKey);
    void LoadConfig();

    QCheckBox* m_enable = nullptr;
    QLineEdit* m_serverAddress = nullptr;
    QLineEdit* m_serverPort = nullptr;
    QLineEdit* m_remotePort = nullptr;
    QCheckBox* m_security = nullptr;
    QLineEdit* m_password = nullptr;
};
