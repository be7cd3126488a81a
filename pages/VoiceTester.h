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

    /// Stops what is playing.
    ~VoiceTester() override;

private slots:
    void OnBtnScanClicked(bool checked);
    void OnBtnPlayClicked(bool checked);

    /// For boards with a microphone, whose recordings end by this timer; it never runs on this one.
    void OnTimeout();

private:
    QComboBox* m_files = nullptr;
    QTimer* m_timer = nullptr;
    QLabel* m_status = nullptr;
    bool m_isRecording = false;
};
