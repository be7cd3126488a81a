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
    QFont font = widget->font();
    for (int stretch = 95; stretch >= 50; stretch -= 5) {
        if (widget->sizeHint().width() <= widget->maximumWidth()) {
            return;
        }
        font.setStretch(stretch);
        widget->setFont(font);
    }
}
