// The library with the cameras of Qt Multimedia.

#include "instruments/Cameras.h"

#include <QCamera>
#include <QCameraInfo>
#include <QCameraViewfinder>

namespace
{

class QtCameras : public Cameras
{
public:
    explicit QtCameras(QWidget* page)
        : m_found(QCameraInfo::availableCameras()), m_viewfinder(new QCameraViewfinder(page))
    {
    }

    ~QtCameras() override { QtCameras::Close(); }

    QStringList Names() const override
    {
        QStringList names;
        for (const QCameraInfo& camera : m_found) {
            names += camera.description();
        }
        return names;
    }

    QWidget* Viewfinder() const override { return m_viewfinder; }

    void Open(int index) override
    {
        Close();
        m_camera = std::make_unique<QCamera>(m_found[index]);
        m_camera->setViewfinder(m_viewfinder);
        m_camera->start();
    }

    void Close() override
    {
        if (m_camera != nullptr) {
            m_camera->stop();
            m_camera.reset();
        }
    }

private:
    Q_DISABLE_COPY(QtCameras)

    const QList<QCameraInfo> m_found;
    QCameraViewfinder* const m_viewfinder;
    std::unique_ptr<QCamera> m_camera;
};

} // namespace

/// What Cameras::Find() looks for.
extern "C" Q_DECL_EXPORT Cameras* FindCameras(QWidget* page)
{
    return new QtCameras(page);
}
