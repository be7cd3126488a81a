#include "pages/CameraTester.h"

#include "instruments/Rows.h"

#include <QCamera>
#include <QCameraViewfinder>
#include <QComboBox>
#include <QGridLayout>
#include <QPushButton>

namespace
{

/// Has GStreamer's camera source free its buffers when it stops. Left to itself it gives them up
/// and loses track of them (1.22): five descriptors each time, one of them the camera's. It reads
/// the variable whenever a camera stops.
void MakeCamerasFreeTheirBuffers()
{
    if (!qEnvironmentVariableIsSet("GST_V4L2_FORCE_DRAIN")) {
        qputenv("GST_V4L2_FORCE_DRAIN", "1");
    }
}

} // namespace

CameraTester::CameraTester(QWidget* parent)
    : QWidget(parent), m_cameras(QCameraInfo::availableCameras())
{
    MakeCamerasFreeTheirBuffers();

    auto* layout = new QGridLayout(this);

    m_viewfinder = new QCameraViewfinder(this);
    // Black, not the page's grey, where no camera shows a picture.
    m_viewfinder->setPalette(Qt::black);
    m_viewfinder->setAutoFillBackground(true);
    layout->addWidget(m_viewfinder, 0, 0, 1, 3);

    m_selector = new QComboBox(this);
    m_selector->setFixedHeight(40);
    m_selector->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    for (const QCameraInfo& camera : m_cameras) {
        m_selector->addItem(camera.description());
    }
    layout->addWidget(m_selector, 1, 0);

    const QSize size(100, 30);
    QPushButton* open = NewButton({"Label_1001100", Name("btnopen")}, size, this);
    layout->addWidget(open, 1, 1);
    QPushButton* close = NewButton({"Label_1001101", Name("btnclose")}, size, this);
    layout->addWidget(close, 1, 2);

    connect(open, &QPushButton::clicked, this, &CameraTester::OnBtnOpenClicked);
    connect(close, &QPushButton::clicked, this, &CameraTester::OnBtnCloseClicked);
}

CameraTester::~CameraTester()
{
    Close();
}

void CameraTester::OnBtnOpenClicked(bool /*checked*/)
{
    const int index = m_selector->currentIndex();
    if (index < 0 || index >= m_cameras.size()) {
        return;
    }
    Close();
    m_camera = std::make_unique<QCamera>(m_cameras[index]);
    m_camera->setViewfinder(m_viewfinder);
    m_camera->start();
}

void CameraTester::OnBtnCloseClicked(bool /*checked*/)
{
    Close();
}

void CameraTester::Close()
{
    if (m_camera != nullptr) {
        m_camera->stop();
        m_camera.reset();
    }
}
