#include "instruments/Title.h"

#include "frame/MoskTranslator.h"

#include <QLabel>

QLabel* NewTitle(const QString& key, const QSize& size, QWidget* parent)
{
    auto* title = new QLabel(MoskTranslator::Translate(key), parent);
    title->setFixedSize(size);
    title->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    NarrowText(title);
    return title;
}

void NarrowText(QWidget* widget)
{
    // The font gets its size from the style sheet when the widget is polished.
    widget->ensurePolished();
    // Each width tried loads a font, so the next one is what the text's own width asks for. Fonts
    // do not become narrower in proportion, so one is not always enough.
    const int step = 5;
    const int narrowest = 50;
    QFont font = widget->font();
    int stretch = QFont::Unstretched;
    while (widget->sizeHint().width() > widget->maximumWidth() && stretch > narrowest) {
        const int wanted = stretch * widget->maximumWidth() / widget->sizeHint().width();
        stretch = qBound(narrowest, wanted - wanted % step, stretch - step);
        font.setStretch(stretch);
        widget->setFont(font);
    }
}
