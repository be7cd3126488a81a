#include "instruments/ResultField.h"

#include "texts/MoskTranslator.h"

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
    // The style sheet reads the property only when the widget is polished.
    field->style()->polish(field);
}

void ShowDetecting(QLineEdit* field)
{
    field->setText(MoskTranslator::Translate("Label_1000013"));
    PaintPage();
}

void PaintPage()
{
    // Paint all windows together. A VNC viewer that received only the button would not ask for
    // another picture before the check blocks.
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        QCoreApplication::sendPostedEvents(window, QEvent::UpdateRequest);
    }
    // The picture reaches the screen in the next turn of the event loop, and a VNC viewer two turns
    // later. Timers wait as well: after a change of language, one of them deletes the page.
    for (int turn = 0; turn < 4; ++turn) {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents |
                                        QEventLoop::X11ExcludeTimers);
    }
}
