#pragma once

#include <QSet>
#include <QWidget>

class QCheckBox;
class QGridLayout;
class QLineEdit;
struct IniKey;

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
    /// A file's content with the key set to the field's text. If the operator did not change the
    /// field, the file's value stays, and only a missing key is added.
    QByteArray WithField(const QByteArray& content, const IniKey& key, QLineEdit* field) const;

    QCheckBox* m_enable = nullptr;
    QLineEdit* m_serverAddress = nullptr;
    QLineEdit* m_serverPort = nullptr;
    QLineEdit* m_remotePort = nullptr;
    QCheckBox* m_security = nullptr;
    QLineEdit* m_password = nullptr;
    QSet<QLineEdit*> m_touched;
};
