#include "instruments/PortRows.h"

#include "frame/MoskTranslator.h"
#include "instruments/Title.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace
{

/// Adds a row that holds a title and a field so far.
QWidget* AddRow(QVBoxLayout* layout, const QString& titleKey, QWidget* field)
{
    auto* row = new QWidget(layout->parentWidget());
    auto* rowLayout = new QHBoxLayout(row);
    rowLayout->setContentsMargins(0, 0, 0, 0);
    rowLayout->setSpacing(10);

    QLabel* title = NewTitle(titleKey, QSize(80, 30), row);
    title->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    rowLayout->addWidget(title);

    field->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    rowLayout->addWidget(field);

    layout->addWidget(row);
    return row;
}

} // namespace

QPushButton* AddPortRow(QVBoxLayout* layout, const QString& titleKey, QWidget* field,
                        const QString& buttonName, const QString& buttonKey)
{
    QWidget* row = AddRow(layout, titleKey, field);
    row->setFixedHeight(30);
    row->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);

    auto* button = new QPushButton(MoskTranslator::Translate(buttonKey), row);
    button->setObjectName(buttonName);
    button->setFixedWidth(100);
    button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    row->layout()->addWidget(button);
    return button;
}

void AddPortView(QVBoxLayout* layout, const QString& titleKey, QWidget* view)
{
    AddRow(layout, titleKey, view);
}
