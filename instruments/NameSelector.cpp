#include "instruments/NameSelector.h"

#include <QAbstractItemView>
#include <QStyleOptionComboBox>
#include <QStylePainter>
#include <QStyledItemDelegate>

namespace
{

/// Shows the names in the open list.
class NameDelegate : public QStyledItemDelegate
{
public:
    NameDelegate(NameSelector::Shown shown, QObject* parent)
        : QStyledItemDelegate(parent), m_shown(shown)
    {
    }

    QString displayText(const QVariant& value, const QLocale& /*locale*/) const override
    {
        return m_shown(value.toString());
    }

private:
    const NameSelector::Shown m_shown;
};

} // namespace

NameSelector::NameSelector(Shown shown, QWidget* parent) : QComboBox(parent), m_shown(shown)
{
    setItemDelegate(new NameDelegate(shown, this));
    view()->setTextElideMode(Qt::ElideMiddle);
}

void NameSelector::paintEvent(QPaintEvent* /*event*/)
{
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QRect place =
        style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    option.currentText =
        option.fontMetrics.elidedText(m_shown(option.currentText), Qt::ElideMiddle, place.width());
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}
