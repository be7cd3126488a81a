#pragma once

#include <QMediaServiceProviderPlugin>

/// Offers the simulated board's cameras to Qt Multimedia. Qt finds the plug-in by QT_PLUGIN_PATH,
/// which only the simulated board sets.
class CameraPlugin : public QMediaServiceProviderPlugin,
                     public QMediaServiceSupportedDevicesInterface
{
    Q_OBJECT
    Q_INTERFACES(QMediaServiceSupportedDevicesInterface)
    Q_PLUGIN_METADATA(IID "org.qt-project.qt.mediaserviceproviderfactory/5.0" FILE "cameras.json")

public:
    QMediaService* create(const QString& key) override;
    void release(QMediaService* service) override;

    QList<QByteArray> devices(const QByteArray& service) const override;
    QString deviceDescription(const QByteArray& service, const QByteArray& device) override;
};
