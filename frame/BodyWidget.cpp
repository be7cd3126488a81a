#include "frame/BodyWidget.h"

#include "frame/StartPage.h"
#include "pages/BasicTester.h"
#include "pages/CameraTester.h"
#include "pages/CanTester.h"
#include "pages/ProductionTester.h"
#include "pages/SerialPortTester.h"
#include "pages/SqlTester.h"
#include "pages/VncTester.h"
#include "pages/VoiceTester.h"
#include "pages/WifiTester.h"

#include <QPainter>
#include <QStyleOption>
#include <QVBoxLayout>

BodyWidget::BodyWidget(QWidget* parent) : QWidget(parent)
{
    m_layout = new QVBoxLayout(this);
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(0);
}

void BodyWidget::OpenPage(int id)
{
    if (id == m_pageId) {
        return;
    }
    ClosePage();
    m_page = BuildPage(id);
    if (m_page != nullptr) {
        m_pageId = id;
        m_layout->addWidget(m_page);
    }
}

void BodyWidget::TranslateUI()
{
    const int id = m_pageId;
    ClosePage();
    OpenPage(id);
}

void BodyWidget::ClosePage()
{
    if (m_page == nullptr) {
        return;
    }
    m_layout->removeWidget(m_page);
    delete m_page;
    m_page = nullptr;
    m_pageId = NoPage;
}

QWidget* BodyWidget::BuildPage(int id)
{
    switch (id) {
    case HomePage:
        return new StartPage(this);
    case BasicPage:
        return new BasicTester(this);
    case SerialPage:
        return new SerialPortTester(this);
    case DatabasePage:
        return new SqlTester(this);
    case ProductionPage:
        return new ToolProductionTest(this);
    case WifiPage:
        return new ToolWifiTest(this);
    case VoicePage:
        return new VoiceTester(this);
    case CanPage:
        return new CanTester(this);
    case RemoteAccessPage:
        return new ToolVncTest(this);
    case CameraPage:
        return new CameraTester(this);
    default:
        return nullptr;
    }
}

// A plain QWidget subclass is painted by the style sheet only when it asks for it.
void BodyWidget::paintEvent(QPaintEvent* /*event*/)
{
    QStyleOption option;
    option.initFrom(this);
    QPainter painter(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
}
