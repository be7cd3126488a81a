#include "instruments/Title.h"

#include "frame/MoskTranslator.h"

#include <QLabel>

QLabel* NewTitle(const QString& key, const QSize& size, QWidget* parent)
{
    auto* title = new QLabel(MoskTranslator::Translate(key), parent);
    title->setFixedSize(size);

    // The style sheet gives the font its size when it polishes the label.
    title->ensurePolished();
    const int width = title->fontMetrics().horizontalAdvance(title->text());
    if (width > size.width()) {
        QFont font = title->font();
        font.setStretch(100 * size.width() / width);
        title->setFont(font);
    }
    return title;
}
