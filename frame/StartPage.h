#pragma once

#include <QWidget>

class QComboBox;

/// The home page: the language, the system's version, and what concerns the board as a whole.
class StartPage : public QWidget
{
    Q_OBJECT

public:
    explicit StartPage(QWidget* parent);

    /// The build stamp of the kernel, the last six words of /proc/version; where that has no more
    /// than six words or cannot be read, the version built in.
    QString GetOsVersion();

private slots:
    void OnLanguageChanged(int index);
    void OnBtRebootClicked(bool checked);
    void OnBtSwitchHMIClicked(bool checked);
    void OnBtTestEndClicked(bool checked);

private:
    /// Asks `question` until it was once confirmed, which leaves `markerFile` for the board's other
    /// software and sets `confirmed`; from then on only says `confirmedText`.
    void ConfirmOnce(bool& confirmed, const QString& question, const QString& confirmedText,
                     const QByteArray& markerFile);

    QComboBox* m_language = nullptr;
    bool m_testEnded = false;

    /// The switch to the HMI system has been confirmed in this run. Pages come and go; this stays.
    static bool s_switchHmi;
};
