#pragma once

#include <QList>
#include <QString>

class QWidget;

/// Finds the program's widgets by selectors.
///
/// A selector is one or more steps with blanks between: each is an object name or a class, with an
/// index where several match ("QLineEdit[2]" is the third), and looks among the children of the
/// step before ("bodyWidget QLineEdit[0]"). Widgets count as an operator reads: what is shown
/// before what is hidden, the front window before those behind, from top to bottom, left to right.
class WidgetFinder
{
public:
    /// The widget that a selector means; null, and `error` says why, where there is none.
    static QWidget* Find(const QString& selector, QString* error);

    /// All widgets that the last step of a selector matches, whatever its index. An empty selector
    /// is matched by every widget.
    static QList<QWidget*> FindAll(const QString& selector, QString* error);
};
