#pragma once

#include <QComboBox>

/// A combo box for names from outside, such as files and networks. A function makes the shown text
/// of an item's text. A name that is too long is shortened in the middle. The item's own text stays
/// as it is.
class NameSelector : public QComboBox
{
public:
    /// Returns the text to show for an item's text.
    using Shown = QString (*)(const QString& item);

    NameSelector(Shown shown, QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Shown m_shown;
};
