#include "simulated-board/cameras/CameraService.h"

#include <QFile>
#include <QImage>
#include <QSet>
#include <QVideoFrame>
#include <QVideoSurfaceFormat>

#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace
{

const QSize pictureSize(640, 480);
const int millisecondsAFrame = 40;

/// The devices of the open cameras.
QSet<QString>& OpenCameras()
{
    static QSet<QString> s_devices;
    return s_devices;
}

void Note(const QString& what, const QString& device)
{
    QFile notes("/run/board/received/cameras");
    if (notes.open(QIODevice::WriteOnly | QIODevice::Append)) {
        notes.write((what + ' ' + device + '\n').toUtf8());
    }
}

} // namespace

CameraSelector::CameraSelector() : m_cameras(OwnDescription().cameras) {}

BoardDescription::Camera CameraSelector::Selected() const
{
    const QString device = m_cameras.value(m_selected).device;
    const QList<BoardDescription::Camera> cameras = OwnDescription().cameras;
    for (const BoardDescription::Camera& camera : cameras) {
        if (camera.device == device) {
            return camera;
        }
    }
    return {};
}

int CameraSelector::deviceCount() const
{
    return m_cameras.size();
}

QString CameraSelector::deviceName(int index) const
{
    return m_cameras.value(index).device;
}

QString CameraSelector::deviceDescription(int index) const
{
    return m_cameras.value(index).name;
}

int CameraSelector::defaultDevice() const
{
    return 0;
}

int CameraSelector::selectedDevice() const
{
    return m_selected;
}

void CameraSelector::setSelectedDevice(int index)
{
    m_selected = index;
    emit selectedDeviceChanged(index);
    emit selectedDeviceChanged(deviceName(index));
}

void CameraRenderer::Show(const QColor& colour)
{
    if (m_surface.isNull()) {
        return;
    }
    if (!m_surface->isActive()) {
        m_surface->start(QVideoSurfaceFormat(pictureSize, QVideoFrame::Format_RGB32));
    }
    QImage picture(pictureSize, QImage::Format_RGB32);
    picture.fill(colour);
    m_surface->present(QVideoFrame(picture));
}

void CameraRenderer::Stop()
{
    if (!m_surface.isNull()) {
        m_surface->stop();
    }
}

QAbstractVideoSurface* CameraRenderer::surface() const
{
    return m_surface;
}

void CameraRenderer::setSurface(QAbstractVideoSurface* surface)
{
    Stop();
    m_surface = surface;
}

CameraSwitch::CameraSwitch(CameraSelector& selector, CameraRenderer& renderer)
    : m_selector(selector), m_renderer(renderer)
{
    connect(&m_frames, &QTimer::timeout, this, &CameraSwitch::OnFrame);
}

CameraSwitch::~CameraSwitch()
{
    Close();
}

QCamera::State CameraSwitch::state() const
{
    return m_state;
}

void CameraSwitch::setState(QCamera::State state)
{
    if (state == m_state) {
        return;
    }
    m_state = state;
    emit stateChanged(state);
    if (state == QCamera::ActiveState) {
        SetStatus(Open() ? QCamera::ActiveStatus : QCamera::UnavailableStatus);
        return;
    }
    Close();
    SetStatus(state == QCamera::LoadedState ? QCamera::LoadedStatus : QCamera::UnloadedStatus);
}

QCamera::Status CameraSwitch::status() const
{
    return m_status;
}

QCamera::CaptureModes CameraSwitch::captureMode() const
{
    return m_mode;
}

void CameraSwitch::setCaptureMode(QCamera::CaptureModes mode)
{
    m_mode = mode;
    emit captureModeChanged(mode);
}

bool CameraSwitch::isCaptureModeSupported(QCamera::CaptureModes mode) const
{
    return mode == QCamera::CaptureViewfinder;
}

bool CameraSwitch::canChangeProperty(PropertyChangeType /*change*/,
                                     QCamera::Status /*status*/) const
{
    return true;
}

void CameraSwitch::OnFrame()
{
    const BoardDescription::Camera camera = m_selector.Selected();
    if (camera.device.isEmpty()) {
        Close();
        SetStatus(QCamera::UnavailableStatus);
        emit error(QCamera::CameraError, "No such device");
        return;
    }
    m_renderer.Show(camera.colour == "any" ? "#808080" : camera.colour);
}

bool CameraSwitch::Open()
{
    const BoardDescription::Camera camera = m_selector.Selected();
    if (camera.device.isEmpty()) {
        emit error(QCamera::CameraError, "No such device");
        return false;
    }
    if (camera.colour == "busy" || OpenCameras().contains(camera.device)) {
        emit error(QCamera::CameraError, "Device or resource busy");
        return false;
    }
    m_openDevice = camera.device;
    OpenCameras().insert(m_openDevice);
    m_descriptor = open(ownDescriptionPath, O_RDONLY | O_CLOEXEC);
    Note("open", m_openDevice);
    m_frames.start(millisecondsAFrame);
    return true;
}

void CameraSwitch::Close()
{
    m_frames.stop();
    if (m_openDevice.isEmpty()) {
        return;
    }
    m_renderer.Stop();
    OpenCameras().remove(m_openDevice);
    if (qEnvironmentVariableIsSet("GST_V4L2_FORCE_DRAIN")) {
        close(m_descriptor);
    }
    Note("close", m_openDevice);
    m_openDevice.clear();
}

void CameraSwitch::SetStatus(QCamera::Status status)
{
    if (status != m_status) {
        m_status = status;
        emit statusChanged(status);
    }
}

CameraService::CameraService() : QMediaService(nullptr) {}

QMediaControl* CameraService::requestControl(const char* name)
{
    if (std::strcmp(name, QVideoDeviceSelectorControl_iid) == 0) {
        return &m_selector;
    }
    if (std::strcmp(name, QVideoRendererControl_iid) == 0) {
        return &m_renderer;
    }
    if (std::strcmp(name, QCameraControl_iid) == 0) {
        return &m_switch;
    }
    return nullptr;
}

void CameraService::releaseControl(QMediaControl* /*control*/) {}
