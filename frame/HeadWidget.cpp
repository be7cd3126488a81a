#include "frame/HeadWidget.h"

#include "frame/BodyWidget.h"
#include "frame/MoskTester.h"
#include "frame/Pages.h"
#include "texts/MoskTranslator.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QStyleOption>
#include <QTabWidget>

HeadTabWidget::HeadTabWidget(int pageId, const QString& text, QWidget* parent)
    : QWidget(parent), m_pageId(pageId), m_text(text)
{
}

int HeadTabWidget::GetPageId()
{
    return m_pageId;
}

QString HeadTabWidget::GetText()
{
    return m_text;
}

HeadWidget::HeadWidget(MoskTester* parent) : QWidget(parent), m_mainWindow(parent)
{
    auto* layout = new QHBoxLayout;
    layout->setContentsMargins(0, 0, 6, 0);
    layout->setSpacing(0);

    auto* logo = new QWidget(this);
    logo->setObjectName("logoWidget");
    logo->setFixedSize(80, 50);
    logo->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    layout->addWidget(logo);
    layout->addSpacing(10);

    m_menu = new QTabWidget(this);
    m_menu->setObjectName("menuTab");
    m_menu->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    layout->addWidget(m_menu);

    InitTabWidget(m_menu);
    TranslateUI();
    setLayout(layout);
    connect(m_menu, &QTabWidget::currentChanged, this, &HeadWidget::OnCurrentIndexChanged);
}

void HeadWidget::InitTabWidget(QTabWidget* tab)
{
    auto* layout = new QHBoxLayout(tab);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    for (const Page& page : allPages) {
        if (page.tabKey != nullptr) {
            tab->addTab(new HeadTabWidget(page.id, page.tabKey, tab), QString());
        }
    }
}

void HeadWidget::TranslateUI()
{
    for (int i = 0; i < m_menu->count(); ++i) {
        if (auto* tab = qobject_cast<HeadTabWidget*>(m_menu->widget(i))) {
            m_menu->setTabText(i, MoskTranslator::Translate(tab->GetText()));
        }
    }
}

void HeadWidget::Init()
{
    m_menu->setCurrentIndex(0);
    // The first tab is already selected, so the menu emits no signal for it.
    OnCurrentIndexChanged(0);
}

void HeadWidget::OnCurrentIndexChanged(int /*index*/)
{
    if (auto* tab = qobject_cast<HeadTabWidget*>(m_menu->currentWidget())) {
        m_mainWindow->GetBody()->OpenPage(tab->GetPageId());
    }
}

// The style sheet paints a subclass of QWidget only if its paintEvent() asks for it.
void HeadWidget::paintEvent(QPaintEvent* /*event*/)
{
    QStyleOption option;
    option.initFrom(this);
    QPainter painter(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
}
