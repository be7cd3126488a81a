#pragma once

#include "simulated-board/BoardDescription.h"

#include <QAbstractVideoSurface>
#include <QCameraControl>
#include <QMediaService>
#include <QPointer>
#include <QTimer>
#include <QVideoDeviceSelectorControl>
#include <QVideoRendererControl>

/// Selects the camera that the service uses.
class CameraSelector : public QVideoDeviceSelectorControl
{
    Q_OBJECT

public:
    CameraSelector();

    /// The chosen camera; without a device when it has been unplugged.
    BoardDescription::Camera Selected() const;

    int deviceCount() const override;
    QString deviceName(int index) const override;
    QString deviceDescription(int index) const override;
    int defaultDevice() const override;
    int selectedDevice() const override;
    void setSelectedDevice(int index) override;

private:
    const QList<BoardDescription::Camera> m_cameras;
    int m_selected = 0;
};

/// Holds the surface that the picture is drawn on.
class CameraRenderer : public QVideoRendererControl
{
    Q_OBJECT

public:
    void Show(const QColor& colour);
    void Stop();

    QAbstractVideoSurface* surface() const override;
    void setSurface(QAbstractVideoSurface* surface) override;

private:
    QPointer<QAbstractVideoSurface> m_surface;
};

/// Switches the camera on and off, and records both in /run/board/received/cameras: "open DEVICE"
/// and "close DEVICE". Like a real camera, an open one cannot be opened again. As with GStreamer's
/// camera source (1.22), its descriptor is never closed unless GST_V4L2_FORCE_DRAIN is set.
class CameraSwitch : public QCameraControl
{
    Q_OBJECT

public:
    CameraSwitch(CameraSelector& selector, CameraRenderer& renderer);
    ~CameraSwitch() override;

    QCamera::State state() const override;
    void setState(QCamera::State state) override;
    QCamera::Status status() const override;
    QCamera::CaptureModes captureMode() const override;
    void setCaptureMode(QCamera::CaptureModes mode) override;
    bool isCaptureModeSupported(QCamera::CaptureModes mode) const override;
    bool canChangeProperty(PropertyChangeType change, QCamera::Status status) const override;

private slots:
    void OnFrame();

private:
    bool Open();
    void Close();
    void SetStatus(QCamera::Status status);

    CameraSelector& m_selector;
    CameraRenderer& m_renderer;
    QTimer m_frames;
    QString m_openDevice;
    int m_descriptor = -1;
    QCamera::State m_state = QCamera::UnloadedState;
    QCamera::Status m_status = QCamera::UnloadedStatus;
    QCamera::CaptureModes m_mode = QCamera::CaptureViewfinder;
};

/// A camera of the simulated board as Qt Multimedia sees it.
class CameraService : public QMediaService
{
    Q_OBJECT

public:
    CameraService();

    QMediaControl* requestControl(const char* name) override;
    void releaseControl(QMediaControl* control) override;

private:
    CameraSelector m_selector;
    CameraRenderer m_renderer;
    // The last member, so that an open camera is closed while its renderer still exists.
    CameraSwitch m_switch{m_selector, m_renderer};
};
