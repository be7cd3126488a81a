#include "pages/CameraTester.h"

#include "instruments/Cameras.h"
#include "instruments/Rows.h"

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

CameraTester::CameraTester(QWidget* parent) : QWidget(parent), m_cameras(Cameras::Find(this))
{
    MakeCamerasFreeTheirBuffers();

    auto* layout = new QGridLayout(this);

    QWidget* viewfinder = m_cameras != nullptr ? m_cameras->Viewfinder() : new QWidget(this);
    // Black, not the page's grey, where no camera shows a picture.
    viewfinder->setPalette(Qt::black);
    viewfinder->setAutoFillBackground(true);
    layout->addWidget(viewfinder, 0, 0, 1, 3);

    m_selector = new QComboBox(this);
    m_selector->setFixedHeight(40);
    m_selector->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    if (m_cameras != nullptr) {
        m_names = m_cameras->Names();
    }
    m_selector->addItems(m_names);
    layout->addWidget(m_selector, 1, 0);

    const QSize size(100, 30);
    QPushButton* open = NewButton({"Label_1001100", Name("btnopen")}, size, this);
    layout->addWidget(open, 1, 1);
    QPushButton* close = NewButton({"Label_1001101", Name("btnclose")}, size, this);
    layout->addWidget(close, 1, 2);

    connect(open, &QPushButton::clicked, this, &CameraTester::OnBtnOpenClicked);
    connect(close, &QPushButton::clicked, this, &CameraTester::OnBtnCloseClicked);
}

CameraTester::~CameraTester() = default;

void CameraTester::OnBtnOpenClicked(bool /*checked*/)
{
    const int index = m_selector->currentIndex();
    if (index >= 0 && index < m_names.size()) {
        m_cameras->Open(index);
    }
}

void CameraTester::OnBtnCloseClicked(bool /*checked*/)
{
    if (m_cameras != nullptr) {
        m_cameras->Close();
    }
}
