#pragma once

#include <QWidget>

class QComboBox;
class QLabel;
class QTimer;

/// The command line that plays a sound file in the background, cut to what its buffer of 100 bytes
/// holds. `item` is a line of the scan's output, with or without its line end; whatever the file's
/// name holds reaches the player as part of the name, never as a command.
QByteArray PlayCommand(const QString& item);

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
