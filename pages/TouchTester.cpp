#include "pages/TouchTester.h"

#include "texts/MoskTranslator.h"
#include "texts/MoskUtility.h"

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

// Qt sends all moves of a finger to the widget that was touched first. So this looks up the widget
// that is under the finger now.
bool ToolTouchTest::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        // A lifted finger is nowhere. A mouse stays where its button was released.
        m_isLifted = event->type() == QEvent::MouseButtonRelease &&
                     mouse->source() != Qt::MouseEventNotSynthesized;
        Light(m_isLifted ? nullptr : childAt(mapFromGlobal(mouse->globalPos())));
        break;
    }
    case QEvent::Enter:
        // Qt assumes a mouse where the finger was lifted.
        if (m_isLifted) {
            Light(nullptr);
        }
        break;
    default:
        break;
    }
    return QDialog::eventFilter(watched, event);
}

/// Lights up one place, or none if `place` is null.
void ToolTouchTest::Light(const QWidget* place)
{
    const auto buttons = findChildren<QPushButton*>();
    for (QPushButton* button : buttons) {
        if (button->underMouse() == (button == place)) {
            continue;
        }
        // The style sheet's :hover follows this attribute, but only from the first mouse move over
        // the button.
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

// A key on a keyboard must not end the test. Only a tap on the centre ends it.
void ToolTouchTest::keyPressEvent(QKeyEvent* event)
{
    event->ignore();
}

void ToolTouchTest::OnBtnClosed(bool /*checked*/)
{
    close();
}
