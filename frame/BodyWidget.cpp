#include "frame/BodyWidget.h"

#include "frame/Pages.h"

#include <QApplication>
#include <QEvent>
#include <QPainter>
#include <QStyleOption>
#include <QThread>
#include <QTimer>
#include <QVBoxLayout>

BodyWidget::BodyWidget(QWidget* parent) : QWidget(parent)
{
    m_layout = new QVBoxLayout(this);
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(0);

    m_later = new QTimer(this);
    m_later->setSingleShot(true);
    connect(m_later, &QTimer::timeout, this, &BodyWidget::OnLater);
    window()->installEventFilter(this);
}

void BodyWidget::OpenPage(int id)
{
    m_wantedId = id;
    ChangePage();
}

void BodyWidget::TranslateUI()
{
    m_isStale = true;
    ChangePage();
}

bool BodyWidget::IsChangeDue() const
{
    return m_wantedId != m_pageId || m_isStale;
}

/// Whether a slot of the page may still be waiting for a box that it opened.
bool BodyWidget::IsPageWaiting()
{
    return QApplication::activeModalWidget() != nullptr ||
           QThread::currentThread()->loopLevel() > 1;
}

/// The page's combo box list that is open or just being closed; null when there is none.
QWidget* BodyWidget::ShownList() const
{
    const auto children = m_page != nullptr ? m_page->findChildren<QWidget*>() : QWidgetList();
    for (QWidget* child : children) {
        if (child->windowType() == Qt::Popup && child->isVisible()) {
            return child;
        }
    }
    return nullptr;
}

/// Shows the page that was asked for. If code of the current page is still running, this is put
/// off.
void BodyWidget::ChangePage()
{
    if (m_page != nullptr) {
        // A page that is about to be deleted takes no more taps.
        m_page->setAttribute(Qt::WA_TransparentForMouseEvents, IsChangeDue());
    }
    if (!IsChangeDue() || QApplication::activeModalWidget() != nullptr) {
        return; // eventFilter() comes back to it when the box is closed.
    }
    // A list is part of the page. Changing the page would delete it while it is open, or while its
    // own code closes it, so the change waits.
    if (IsPageWaiting() || ShownList() != nullptr) {
        m_later->start();
        return;
    }
    ClosePage();
    m_isStale = false;
    m_page = BuildPage(m_wantedId);
    if (m_page != nullptr) {
        m_pageId = m_wantedId;
        m_layout->addWidget(m_page);
    } else {
        m_wantedId = NoPage;
    }
}

void BodyWidget::OnLater()
{
    if (IsChangeDue() && !IsPageWaiting()) {
        // None of the list's code is running now, so nothing else would close it.
        if (QWidget* list = ShownList()) {
            list->close();
        }
    }
    ChangePage();
}

bool BodyWidget::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::WindowUnblocked) {
        m_later->start();
    }
    return QWidget::eventFilter(watched, event);
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
    for (const Page& page : allPages) {
        if (page.id == id) {
            return page.build(this);
        }
    }
    return nullptr;
}

QVariantList BodyWidget::Pages()
{
    QVariantList list;
    int tab = 0;
    for (const Page& page : allPages) {
        list.append(QVariantMap{
            {"id", page.id}, {"name", page.name}, {"tab", page.tabKey != nullptr ? tab++ : -1}});
    }
    return list;
}

// The style sheet paints a subclass of QWidget only if its paintEvent() asks for it.
void BodyWidget::paintEvent(QPaintEvent* /*event*/)
{
    QStyleOption option;
    option.initFrom(this);
    QPainter painter(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
}
