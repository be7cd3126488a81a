#include "frame/MoskTester.h"

#include "frame/BodyWidget.h"
#include "frame/HeadWidget.h"
#include "frame/InputGate.h"
#include "frame/KeyboardPanel.h"
#include "texts/MoskUtility.h"

#include <QTimer>
#include <QVBoxLayout>

MoskTester* g_mainwnd = nullptr;

MoskTester::MoskTester(QWidget* parent) : QMainWindow(parent)
{
    setWindowFlags(Qt::FramelessWindowHint);

    m_central = new QWidget(this);
    m_central->setObjectName("centralWidget");
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    policy.setRetainSizeWhenHidden(m_central->sizePolicy().retainSizeWhenHidden());
    m_central->setSizePolicy(policy);

    m_layout = new QVBoxLayout(m_central);
    m_layout->setSpacing(0);
    m_layout->setContentsMargins(0, 0, 0, 0);
    setCentralWidget(m_central);
    resize(MoskUtility::GetMainWindowSize());
    // A page that needs more space than a small screen has is squeezed. The window keeps its size.
    layout()->setSizeConstraint(QLayout::SetNoConstraint);

    m_header = new HeadWidget(this);
    m_header->setObjectName("headerWidget");
    m_header->setFixedHeight(50);
    m_header->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_layout->addWidget(m_header);

    m_body = new BodyWidget(this);
    m_body->setObjectName("bodyWidget");
    m_body->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_layout->addWidget(m_body);

    m_header->Init();

    m_timer = new QTimer(this);
    connect(m_timer, &QTimer::timeout, this, &MoskTester::OnTimer);

    new InputGate(this);
    new KeyboardPanel(this);
}

BodyWidget* MoskTester::GetBody()
{
    return m_body;
}

void MoskTester::TranslateUI()
{
    m_timer->start(1);
}

void MoskTester::OnTimer()
{
    m_timer->stop();
    m_header->TranslateUI();
    m_body->TranslateUI();
}
