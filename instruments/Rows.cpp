#include "instruments/Rows.h"

#include "instruments/Title.h"
#include "texts/MoskTranslator.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

QPushButton* NewButton(const Button& button, const QSize& size, QWidget* parent)
{
    auto* made = new QPushButton(MoskTranslator::Translate(button.textKey), parent);
    made->setObjectName(button.name.text);
    made->setFixedSize(size);
    made->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    return made;
}

QPushButton* AddRow(QGridLayout* grid, int row, const QSize& size, const Row& content)
{
    QWidget* page = grid->parentWidget();
    grid->addWidget(NewTitle(content.titleKey, size, page), row, 0);
    if (content.field != nullptr) {
        content.field->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
        grid->addWidget(content.field, row, 1);
    }
    QPushButton* button = NewButton(content.button, size, page);
    grid->addWidget(button, row, 2);
    if (content.field != nullptr) {
        QWidget::setTabOrder(content.field, button);
    }
    return button;
}

void AddWideRow(QGridLayout* grid, int row, const QSize& titleSize, const Row& content)
{
    grid->addWidget(NewTitle(content.titleKey, titleSize, grid->parentWidget()), row, 0);
    content.field->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    grid->addWidget(content.field, row, 1, 1, 2);
}

QPushButton* AddRow(QVBoxLayout* column, const Row& content)
{
    auto* row = new QWidget(column->parentWidget());
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(10);
    layout->addWidget(NewTitle(content.titleKey, {80, 30}, row));
    content.field->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    layout->addWidget(content.field);
    column->addWidget(row);
    if (content.button.textKey == nullptr) {
        row->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        return nullptr;
    }
    row->setFixedHeight(30);
    row->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    QPushButton* button = NewButton(content.button, {100, QWIDGETSIZE_MAX}, row);
    button->setMinimumHeight(0);
    button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    layout->addWidget(button);
    return button;
}

void AddFiller(QGridLayout* grid, int row)
{
    auto* filler = new QWidget(grid->parentWidget());
    filler->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    grid->addWidget(filler, row, 0, 1, 3);
}
