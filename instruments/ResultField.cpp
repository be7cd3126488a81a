#include "instruments/ResultField.h"

#include "frame/MoskTranslator.h"

#include <QApplication>
#include <QEvent>
#include <QEventLoop>
#include <QLineEdit>
#include <QStyle>
#include <QWidget>

void ShowVerdict(QLineEdit* field, const QString& text, bool ok)
{
    field->setText(text);
    field->setProperty("status", ok ? "ok" : "error");
    // The style sheet looks at a property only when it polishes the widget.
    field->style()->polish(field);
}

void ShowDetecting(QLineEdit* field)
{
    field->setText(MoskTranslator::Translate("Label_1000013"));
    PaintPage();
}

void PaintPage()
{
    // All windows first: a VNC viewer that has got a picture of the button alone would not ask for
    // the next one before the check blocks.
    for (QWidget* window : QApplication::topLevelWidgets()) {
        QCoreApplication::sendPostedEvents(window, QEvent::UpdateRequest);
    }
    // The picture reaches the screen in the next turn of the event loop, and a VNC viewer in two
    // more. Timers wait as well: the one of a new language deletes the page.
    for (int turn = 0; turn < 4; ++turn) {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents |
                                        QEventLoop::X11ExcludeTimers);
    }
}
