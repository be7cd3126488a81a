#include "pages/TouchTester.h"

#include "frame/MoskTranslator.h"
#include "frame/MoskUtility.h"

#include <QCoreApplication>
#include <QGridLayout>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPushButton>

ToolTouchTest::ToolTouchTest(QWidget* parent) : QDialog(parent, Qt::FramelessWindowHint)
{
    setObjectName("toolTouchTest");
    installEventFilter(this);
    resize(MoskUtility::GetMainWindowSize());

    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(2);

    const int side = 9;
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            auto* button = new QPushButton(QString::number(side * row + column + 1), this);
            button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
            button->setMouseTracking(true);
            button->installEventFilter(this);
            layout->addWidget(button, row, column);
        }
    }

    auto* exit = qobject_cast<QPushButton*>(layout->itemAtPosition(side / 2, side / 2)->widget());
    exit->setText(MoskTranslator::Translate("Label_1000600"));
    connect(exit, &QPushButton::clicked, this, &ToolTouchTest::OnBtnClosed);
}

// While a finger is down Qt takes the place that it was put on for the place under it.
bool ToolTouchTest::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        // A finger that is lifted is nowhere, a mouse is where its button was released.
        m_isLifted = event->type() == QEvent::MouseButtonRelease &&
                     mouse->source() != Qt::MouseEventNotSynthesized;
        Light(m_isLifted ? nullptr : childAt(mapFromGlobal(mouse->globalPos())));
        break;
    }
    case QEvent::Enter:
        // Qt thinks of a mouse where the finger was lifted.
        if (m_isLifted) {
            Light(nullptr);
        }
        break;
    default:
        break;
    }
    return QDialog::eventFilter(watched, event);
}

/// Lights up a place and no other.
void ToolTouchTest::Light(const QWidget* place)
{
    for (auto* button : findChildren<QPushButton*>()) {
        if (button->underMouse() == (button == place)) {
            continue;
        }
        // What the style sheet's :hover goes by, from the mouse's first move over the button on.
        button->setAttribute(Qt::WA_UnderMouse, button == place);
        if (button == place) {
            const QPoint centre = button->rect().center();
            QMouseEvent move(QEvent::MouseMove, centre, button->mapToGlobal(centre), Qt::NoButton,
                             Qt::NoButton, Qt::NoModifier);
            QCoreApplication::sendEvent(button, &move);
        }
        button->update();
    }
}

// A keyboard on the board must not end the test: only the finger on the centre does.
void ToolTouchTest::keyPressEvent(QKeyEvent* event)
{
    event->ignore();
}

void ToolTouchTest::OnBtnClosed(bool /*checked*/)
{
    close();
}
