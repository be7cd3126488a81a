#pragma once

#include <QCameraInfo>
#include <QList>
#include <QWidget>

#include <memory>

class QCamera;
class QCameraViewfinder;
class QComboBox;

/// Shows the live picture of one of the board's cameras.
class CameraTester : public QWidget
{
    Q_OBJECT

public:
    explicit CameraTester(QWidget* parent);

    /// Closes the camera.
    ~CameraTester() override;

private slots:
    void OnBtnOpenClicked(bool checked);
    void OnBtnCloseClicked(bool checked);

private:
    void Close();

    /// The cameras that were there when the page was built, as the selector lists them.
    const QList<QCameraInfo> m_cameras;
    QCameraViewfinder* m_viewfinder = nullptr;
    QComboBox* m_selector = nullptr;
    /// The open camera, or none.
    std::unique_ptr<QCamera> m_camera;
};
