#pragma once

#include <QComboBox>

/// A choice of names that come from outside, of files or networks. Each is shown as a function
/// says, on one line and with both its ends; the text of its item stays what it is.
class NameSelector : public QComboBox
{
public:
    /// What is shown of an item's text.
    using Shown = QString (*)(const QString& item);

    NameSelector(Shown shown, QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Shown m_shown;
};
