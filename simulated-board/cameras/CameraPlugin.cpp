#include "simulated-board/cameras/CameraPlugin.h"

#include "simulated-board/BoardDescription.h"
#include "simulated-board/cameras/CameraService.h"

QMediaService* CameraPlugin::create(const QString& key)
{
    return key == Q_MEDIASERVICE_CAMERA ? new CameraService : nullptr;
}

void CameraPlugin::release(QMediaService* service)
{
    delete service;
}

QList<QByteArray> CameraPlugin::devices(const QByteArray& service) const
{
    QList<QByteArray> devices;
    if (service == Q_MEDIASERVICE_CAMERA) {
        const QList<BoardDescription::Camera> cameras = OwnDescription().cameras;
        for (const BoardDescription::Camera& camera : cameras) {
            devices.append(camera.device.toUtf8());
        }
    }
    return devices;
}

QString CameraPlugin::deviceDescription(const QByteArray& /*service*/, const QByteArray& device)
{
    const QList<BoardDescription::Camera> cameras = OwnDescription().cameras;
    for (const BoardDescription::Camera& camera : cameras) {
        if (camera.device.toUtf8() == device) {
            return camera.name;
        }
    }
    return {};
}
