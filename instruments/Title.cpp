#include "instruments/Title.h"

#include "frame/MoskTranslator.h"

#include <QLabel>

namespace
{

int TextWidth(const QLabel* label)
{
    return label->fontMetrics().horizontalAdvance(label->text());
}

} // namespace

QLabel* NewTitle(const QString& key, const QSize& size, QWidget* parent)
{
    auto* title = new QLabel(MoskTranslator::Translate(key), parent);
    title->setFixedSize(size);

    // The style sheet gives the font its size when it polishes the label.
    title->ensurePolished();
    QFont font = title->font();
    for (int stretch = 95; stretch >= 50 && TextWidth(title) > size.width(); stretch -= 5) {
        font.setStretch(stretch);
        title->setFont(font);
    }
    return title;
}
