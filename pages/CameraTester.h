#pragma once

#include <QStringList>
#include <QWidget>

#include <memory>

class Cameras;
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
    /// Null where their library is missing.
    const std::unique_ptr<Cameras> m_cameras;
    /// The cameras that were there when the page was built, as the selector lists them.
    QStringList m_names;
    QComboBox* m_selector = nullptr;
};
