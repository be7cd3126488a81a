#include "instruments/ResultField.h"

#include "frame/MoskTranslator.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QLineEdit>
#include <QStyle>

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
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}
