#pragma once

#include <QWidget>

class QComboBox;

/// The home page: the language, the system's version, and actions on the board as a whole.
class StartPage : public QWidget
{
    Q_OBJECT

public:
    explicit StartPage(QWidget* parent);

    /// The build stamp of the kernel: the last six words of /proc/version. If the file cannot be
    /// read or has six words or fewer, the built-in version.
    QString GetOsVersion();

private slots:
    void OnLanguageChanged(int index);
    void OnBtRebootClicked(bool checked);
    void OnBtSwitchHMIClicked(bool checked);
    void OnBtTestEndClicked(bool checked);

private:
    /// Asks `question`. If the operator says yes, it creates `markerFile` for the board's other
    /// software and sets `confirmed`. Once `confirmed` is set, it only shows `confirmedText`.
    void ConfirmOnce(bool& confirmed, const QString& question, const QString& confirmedText,
                     const QByteArray& markerFile);

    QComboBox* m_language = nullptr;
    bool m_testEnded = false;

    /// Whether the switch to the HMI system was confirmed in this run. Static, because it must
    /// outlive the page.
    static bool s_switchHmi;
};
