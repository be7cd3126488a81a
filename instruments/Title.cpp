#include "instruments/Title.h"

#include "texts/MoskTranslator.h"

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
    // Letters of 80 % of the width take more than 80 % of the room in some fonts, so one step is
    // not always enough. Each step loads a font, so it goes straight to the width that seems to
    // fit.
    const int step = 5;
    const int narrowest = 50;
    QFont font = widget->font();
    const int room = widget->maximumWidth();
    int stretch = QFont::Unstretched;
    int width = widget->sizeHint().width();
    while (width > room && stretch > narrowest) {
        const int wanted = stretch * room / width;
        stretch = qBound(narrowest, wanted - wanted % step, stretch - step);
        font.setStretch(stretch);
        widget->setFont(font);
        width = widget->sizeHint().width();
    }
}
