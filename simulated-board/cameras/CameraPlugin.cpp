#include "simulated-board/cameras/CameraPlugin.h"

#include "simulated-board/cameras/CameraList.h"
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
        const QVector<BoardCamera> cameras = CamerasOfTheBoard();
        for (const BoardCamera& camera : cameras) {
            devices.append(camera.device);
        }
    }
    return devices;
}

QString CameraPlugin::deviceDescription(const QByteArray& /*service*/, const QByteArray& device)
{
    const QVector<BoardCamera> cameras = CamerasOfTheBoard();
    for (const BoardCamera& camera : cameras) {
        if (camera.device == device) {
            return camera.description;
        }
    }
    return {};
}
