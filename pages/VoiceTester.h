#pragma once

#include <QWidget>

class QComboBox;
class QLabel;
class QTimer;

/// Lists the WAV files on the USB sticks and SD cards, and plays the one that is chosen.
class VoiceTester : public QWidget
{
    Q_OBJECT

public:
    explicit VoiceTester(QWidget* parent);

    /// Stops the sound.
    ~VoiceTester() override;

private slots:
    void OnBtnScanClicked(bool checked);
    void OnBtnPlayClicked(bool checked);

    /// Ends a recording on boards with a microphone. This board has none, so the timer never runs.
    void OnTimeout();

private:
    QComboBox* m_files = nullptr;
    QTimer* m_timer = nullptr;
    QLabel* m_status = nullptr;
    bool m_isRecording = false;
};
